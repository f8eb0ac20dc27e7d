#include <CoreFoundation/CoreFoundation.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>
#include <unistd.h>

namespace {

/// Returns the description of the only live object and releases the object.
std::string releasedDescription(CFTypeRef object) {
    if (!object) return "NULL";
    const auto lines = macplatform::DescribeLiveObjects();
    CFRelease(object);
    EXPECT_EQ(macplatform::LiveObjectCount(), 0U);
    return lines.size() == 1 ? lines.front() : "not one object";
}

constexpr CFUUIDBytes kSomeBytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                    0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

CFUUIDRef constant(UInt8 last) {
    return CFUUIDGetConstantUUIDWithBytes(nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last);
}

template <typename T>
CFNumberRef newNumber(CFNumberType type, T value) {
    return CFNumberCreate(kCFAllocatorDefault, type, &value);
}

TEST(Uuid, EqualBytesGiveTheSameObject) {
    const CFUUIDRef one = CFUUIDCreateFromUUIDBytes(nullptr, kSomeBytes);
    const CFUUIDRef other = CFUUIDCreateFromUUIDBytes(nullptr, kSomeBytes);
    EXPECT_EQ(one, other);
    EXPECT_EQ(CFGetRetainCount(one), 2);
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(one);
    EXPECT_EQ(std::memcmp(&bytes, &kSomeBytes, sizeof bytes), 0);
    CFRelease(one);
    EXPECT_EQ(releasedDescription(other), "UUID 01234567-89AB-CDEF-0123-456789ABCDEF, 1 reference");
}

TEST(Uuid, IsNeverFreedAfterBecomingConstant) {
    CFUUIDBytes bytes{};
    bytes.byte15 = 7;
    const CFUUIDRef made = CFUUIDCreateFromUUIDBytes(nullptr, bytes);
    EXPECT_EQ(constant(7), made);
    for (int i = 0; i < 5; ++i) CFRelease(made);
    EXPECT_EQ(CFGetRetainCount(made), 0x7FFFFFFF);
    EXPECT_EQ(constant(7), made);
    EXPECT_NE(constant(8), made);
    EXPECT_EQ(macplatform::LiveObjectCount(), 0U);
}

TEST(Uuid, ThreadsCreateAndReleaseTheSameUuid) {
    const auto work = [] {
        for (int i = 0; i < 20000; ++i) {
            const CFUUIDRef uuid = CFUUIDCreateFromUUIDBytes(nullptr, kSomeBytes);
            const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(uuid);
            if (std::memcmp(&bytes, &kSomeBytes, sizeof bytes) != 0) ADD_FAILURE();
            CFRelease(uuid);
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(macplatform::LiveObjectCount(), 0U);
}

TEST(Number, StoresTheValueOfEachType) {
    EXPECT_EQ(releasedDescription(newNumber<std::int8_t>(kCFNumberSInt8Type, -128)),
              "number -128, 1 reference");
    EXPECT_EQ(releasedDescription(newNumber<short>(kCFNumberShortType, 32767)), "number 32767, 1 reference");
    EXPECT_EQ(releasedDescription(newNumber(kCFNumberIntType, -2)), "number -2, 1 reference");
    EXPECT_EQ(releasedDescription(newNumber(kCFNumberLongType, LONG_MIN)),
              "number " + std::to_string(LONG_MIN) + ", 1 reference");
    EXPECT_EQ(releasedDescription(newNumber(kCFNumberSInt64Type, INT64_MIN)),
              "number -9223372036854775808, 1 reference");
    EXPECT_EQ(releasedDescription(newNumber(kCFNumberFloatType, 0.5F)), "number 0.5, 1 reference");
    EXPECT_EQ(releasedDescription(newNumber(kCFNumberDoubleType, 1e300)), "number 1e+300, 1 reference");
    EXPECT_EQ(releasedDescription(newNumber(static_cast<CFNumberType>(99), 1)), "number 0, 1 reference");
    EXPECT_DEATH(CFNumberCreate(nullptr, kCFNumberIntType, nullptr), "CFNumberCreate: the value is NULL");
}

TEST(Number, ReportsLossyConversions) {
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char* name;
        double value;
        bool fits;
        SInt32 nearest;
    } rows[] = {
        // name, value, fits, nearest
        {"Whole", -5.0, true, -5},
        {"Fraction", 2.75, false, 2},
        {"Highest", 2147483647.0, true, 2147483647},
        {"AboveTheHighest", 2147483648.0, false, INT_MIN},
        {"Lowest", -2147483648.0, true, INT_MIN},
        {"BelowTheLowest", -2147483649.0, false, INT_MIN},
        {"Infinite", inf, false, INT_MIN},
        {"NotANumber", std::nan(""), false, INT_MIN},
    };
    for (const auto& row : rows) {
        const CFNumberRef number = newNumber(kCFNumberDoubleType, row.value);
        SInt32 converted = 99;
        EXPECT_EQ(CFNumberGetValue(number, kCFNumberSInt32Type, &converted), row.fits) << row.name;
        EXPECT_EQ(converted, row.nearest) << row.name;
        CFRelease(number);
    }
    const CFNumberRef odd = newNumber(kCFNumberLongLongType, (1LL << 53) + 1);
    double real = 0;
    EXPECT_FALSE(CFNumberGetValue(odd, kCFNumberDoubleType, &real)) << "the value needs 54 bits";
    float small = 0;
    EXPECT_FALSE(CFNumberGetValue(odd, kCFNumberFloatType, &small));
    CFRelease(odd);
    const struct {
        std::int64_t value;
        bool fits;
        int narrow; // as SInt8
    } integers[] = {
        {-128, true, -128}, {-129, false, 127}, {255, true, -1}, {256, false, 0}, {LLONG_MAX, false, -1}};
    for (const auto& row : integers) {
        const CFNumberRef number = newNumber(kCFNumberSInt64Type, row.value);
        std::int8_t narrow = 99;
        EXPECT_EQ(CFNumberGetValue(number, kCFNumberSInt8Type, &narrow), row.fits) << row.value;
        EXPECT_EQ(narrow, row.narrow);
        CFRelease(number);
    }
    const CFNumberRef nan = newNumber(kCFNumberFloatType, std::nanf(""));
    EXPECT_FALSE(CFNumberGetValue(nan, kCFNumberFloatType, &small));
    EXPECT_TRUE(CFNumberGetValue(nan, kCFNumberDoubleType, &real) && std::isnan(real) && std::isnan(small));
    CFRelease(nan);
    for (const auto& [value, fits] :
         {std::pair{0.5, true}, {0.1, false}, {FLT_MAX, true}, {1e300, false}, {inf, true}}) {
        const CFNumberRef number = newNumber<double>(kCFNumberDoubleType, value);
        EXPECT_EQ(CFNumberGetValue(number, kCFNumberFloatType, &small), fits) << value;
        EXPECT_EQ(small, value > FLT_MAX ? inf : static_cast<float>(value));
        CFRelease(number);
    }
}

TEST(Number, ComparesValues) {
    const CFNumberRef two = newNumber(kCFNumberIntType, 2);
    const CFNumberRef real = newNumber(kCFNumberDoubleType, 2.0);
    const CFNumberRef more = newNumber(kCFNumberDoubleType, 2.5);
    EXPECT_TRUE(CFEqual(two, real));
    EXPECT_FALSE(CFEqual(two, more));
    EXPECT_FALSE(CFEqual(two, CFSTR("2")));
    EXPECT_EQ(CFGetTypeID(two), CFNumberGetTypeID());
    for (const CFNumberRef number : {two, real, more}) CFRelease(number);
    const double nan = std::nan("");
    const struct {
        double one, other;
        bool areEqual;
    } rows[] = {
        {nan, -nan, true}, {0.0, -0.0, false}, {0.0, 0.0, true}, {nan, 0.0, false}, {0x1p63, -0x1p63, false}};
    for (const auto& row : rows) {
        const CFNumberRef one = newNumber(kCFNumberDoubleType, row.one);
        const CFNumberRef other = newNumber(kCFNumberDoubleType, row.other);
        const CFNumberRef whole = newNumber(kCFNumberSInt64Type, LLONG_MIN);
        EXPECT_EQ(CFEqual(one, other), row.areEqual) << row.one << ' ' << row.other;
        EXPECT_EQ(CFEqual(whole, other), row.other == -0x1p63);
        for (const CFNumberRef number : {one, other, whole}) CFRelease(number);
    }
}

TEST(Url, StoresAnAbsolutePath) {
    char folder[PATH_MAX];
    ASSERT_TRUE(getcwd(folder, sizeof folder));
    const struct {
        const char* path;
        Boolean isDirectory;
        CFURLPathStyle style;
        std::string described;
    } rows[] = {
        // path, is directory, style, described
        {"/a b%/c", false, kCFURLPOSIXPathStyle, "URL \"/a b%/c\", 1 reference"},
        {"/a", true, kCFURLPOSIXPathStyle, "URL \"/a/\", 1 reference"},
        {"/a//", true, kCFURLPOSIXPathStyle, "URL \"/a//\", 1 reference"},
        {"a/./../b", false, kCFURLPOSIXPathStyle, std::string("URL \"") + folder + "/b\", 1 reference"},
        {"../../../../../../../../../..", true, kCFURLPOSIXPathStyle, "URL \"/\", 1 reference"},
        {"/a/", false, kCFURLPOSIXPathStyle, "URL \"/a\", 1 reference"},
        {"/", false, kCFURLPOSIXPathStyle, "URL \"/\", 1 reference"},
        {"x", false, kCFURLPOSIXPathStyle, std::string("URL \"") + folder + "/x\", 1 reference"},
        {"", true, kCFURLPOSIXPathStyle, "NULL"},
        {"Disk:Folder", false, kCFURLHFSPathStyle, "NULL"},
        {"C:\\a", false, kCFURLWindowsPathStyle, "NULL"},
    };
    for (const auto& row : rows) {
        const CFStringRef text = __CFStringMakeConstantString(row.path);
        EXPECT_EQ(
            releasedDescription(CFURLCreateWithFileSystemPath(nullptr, text, row.style, row.isDirectory)),
            row.described);
    }
    const auto newFolder = [](CFStringRef path, bool isDirectory) {
        return CFURLCreateWithFileSystemPath(nullptr, path, kCFURLPOSIXPathStyle, isDirectory);
    };
    const CFURLRef urls[] = {newFolder(CFSTR("/a"), true), newFolder(CFSTR("/a/"), true),
                             newFolder(CFSTR("/a"), false), newFolder(CFSTR("/b"), true)};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(CFEqual(urls[0], urls[i]), i < 2) << i;
    for (const CFURLRef url : urls) CFRelease(url);
    const UniChar broken[][3] = {{'/', 0xD800, 'a'}, {'/', 0, 'a'}};
    for (const auto& units : broken) {
        const CFStringRef text = CFStringCreateWithCharacters(nullptr, units, 3);
        EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, text, kCFURLPOSIXPathStyle, false), nullptr);
        CFRelease(text);
    }
}

TEST(Values, FailWhenAFaultIsInjected) {
    for (const char* const call :
         {"CFUUIDCreateFromUUIDBytes", "CFUUIDGetConstantUUIDWithBytes", "CFNumberCreate",
          "CFURLCreateWithFileSystemPath", "CFStringCreateWithCharacters", "CFEqual"}) {
        macplatform::InjectFault({call});
    }
    const UniChar unit = 'a';
    EXPECT_EQ(CFUUIDCreateFromUUIDBytes(nullptr, kSomeBytes), nullptr);
    EXPECT_EQ(constant(1), nullptr);
    EXPECT_EQ(newNumber(kCFNumberIntType, 1), nullptr);
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR("/"), kCFURLPOSIXPathStyle, true), nullptr);
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, &unit, 1), nullptr);
    EXPECT_FALSE(CFEqual(CFSTR("a"), CFSTR("a")));
    EXPECT_EQ(macplatform::CancelInjectedFaults(), 0U);
}

} // namespace
