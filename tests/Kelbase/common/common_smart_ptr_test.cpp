#include <Kelbase/common/common_smart_ptr.h>

#include <gtest/gtest.h>

namespace {

struct Counted {
    static int gAlive;
    int value;
    explicit Counted(int v = 0) : value(v) { ++gAlive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --gAlive; }
};
int Counted::gAlive = 0;

} // namespace

TEST(SharedPtr, FreesTheObjectWithTheLastOwner) {
    for (const bool inOneBlock : {false, true}) {
        auto first = inOneBlock ? shared_ptr<Counted>::Make(7) : shared_ptr<Counted>(new Counted(7));
        {
            shared_ptr<Counted> second(first);
            EXPECT_EQ(first.use_count(), 2u);
            shared_ptr<Counted> third(std::move(second));
            EXPECT_EQ(first.use_count(), 2u) << "a move does not change the count";
            EXPECT_EQ(second.use_count(), 1u) << "the count of every null handle";
            third = *&third;
            EXPECT_EQ(third->value, 7);
        }
        EXPECT_EQ(first.use_count(), 1u);
        first.reset(first.get());
        EXPECT_EQ(Counted::gAlive, 1) << "reset to its own object keeps the object";
        first.reset();
        EXPECT_EQ(Counted::gAlive, 0);
        EXPECT_FALSE(first);
        EXPECT_EQ(first.use_count(), 1u);
    }
}

TEST(SharedPtr, ResetDoesNotAffectOtherOwners) {
    shared_ptr<Counted> a(new Counted(1)), b(a);
    a.reset(new Counted(2));
    EXPECT_EQ(a->value, 2);
    EXPECT_EQ(b->value, 1);
    EXPECT_EQ(b.use_count(), 1u);
}

TEST(SharedArray, FreesAsAnArray) {
    {
        shared_array<Counted> a(new Counted[3]), b(a);
        a[2].value = 5;
        EXPECT_EQ(b[2].value, 5);
        scoped_array<Counted> c(new Counted[2]);
        c.reset(new Counted[1]);
        c.reset(c.get());
        EXPECT_EQ(Counted::gAlive, 4);
    }
    EXPECT_EQ(Counted::gAlive, 0);
}
