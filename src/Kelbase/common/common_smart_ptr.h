#pragma once

/// @file
/// Owning pointers. Their reference counts are plain integers: a handle and its copies belong to one thread
/// at a time.

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

/// Deletes an object. Does not compile if the type is incomplete.
template <typename T>
void checked_delete(T* p) {
    static_assert(sizeof(T) != 0, "the type must be complete where its object is deleted");
    delete p;
}

/// Deletes an array made with `new[]`. Does not compile if the type is incomplete.
template <typename T>
void checked_array_delete(T* p) {
    static_assert(sizeof(T) != 0, "the type must be complete where its objects are deleted");
    delete[] p;
}

namespace smart_ptr_detail {

template <typename T>
struct use_counter {
    unsigned int uses;
    void (*dispose)(use_counter*, T* object); ///< Frees the object and the counter.
};

/// The counter of every null handle. Its count never changes, and null handles allocate nothing.
template <typename T>
inline use_counter<T> null_counter = {1, nullptr};

/// A handle with shared ownership. `Delete` frees the object.
template <typename T, void (*Delete)(T*)>
class shared_handle {
    using counter_type = use_counter<T>;

public:
    shared_handle() noexcept = default;
    /// Takes ownership of `p`. Throws `std::bad_alloc`, and `p` is then freed.
    explicit shared_handle(T* p) {
        if (!p) return;
        std::unique_ptr<T, void (*)(T*)> guard(p, Delete);
        counter = new counter_type{1, &dispose_both};
        object = guard.release();
    }
    shared_handle(const shared_handle& other) noexcept : object(other.object), counter(other.counter) {
        if (object) ++counter->uses;
    }
    shared_handle(shared_handle&& other) noexcept : object(other.object), counter(other.counter) {
        other.object = nullptr;
        other.counter = &null_counter<T>;
    }
    shared_handle& operator=(shared_handle other) noexcept {
        swap(other);
        return *this;
    }
    ~shared_handle() {
        if (object && --counter->uses == 0) counter->dispose(counter, object);
    }

    void swap(shared_handle& other) noexcept {
        std::swap(object, other.object);
        std::swap(counter, other.counter);
    }

    /// Releases the present object and takes ownership of `p`. Does nothing if `p` is the present object.
    /// Throws `std::bad_alloc`: `p` is then freed and the present object stays.
    void reset(T* p = nullptr) {
        if (p != object) shared_handle(p).swap(*this);
    }

    T* get() const noexcept { return object; }
    /// Returns the number of handles on the object, 1 for a null handle.
    unsigned int use_count() const noexcept { return counter->uses; }
    explicit operator bool() const noexcept { return object != nullptr; }

protected:
    /// Counter and object in one allocation.
    struct block : counter_type {
        template <typename... Arguments>
        explicit block(Arguments&&... arguments)
            : counter_type{1, &dispose_block}, value(std::forward<Arguments>(arguments)...) {}
        T value;
    };
    explicit shared_handle(block* b) noexcept : object(&b->value), counter(b) {}

private:
    static void dispose_both(counter_type* counter, T* object) {
        Delete(object);
        delete counter;
    }
    static void dispose_block(counter_type* counter, T*) { delete static_cast<block*>(counter); }

    T* object = nullptr;
    counter_type* counter = &null_counter<T>;
};

} // namespace smart_ptr_detail

/// Shared ownership of one object.
template <typename T>
class shared_ptr : public smart_ptr_detail::shared_handle<T, &checked_delete<T>> {
    using base = smart_ptr_detail::shared_handle<T, &checked_delete<T>>;

public:
    using base::base;
    shared_ptr() noexcept = default;

    /// Creates the object and its counter in one allocation.
    template <typename... Arguments>
    static shared_ptr make(Arguments&&... arguments) {
        return shared_ptr(new typename base::block(std::forward<Arguments>(arguments)...));
    }

    ///@{
    /// Undefined for a null handle.
    T& operator*() const noexcept { return *this->get(); }
    T* operator->() const noexcept { return this->get(); }
    ///@}

private:
    explicit shared_ptr(typename base::block* b) noexcept : base(b) {}
};

/// Shared ownership of an array made with `new[]`.
template <typename T>
class shared_array : public smart_ptr_detail::shared_handle<T, &checked_array_delete<T>> {
public:
    using smart_ptr_detail::shared_handle<T, &checked_array_delete<T>>::shared_handle;
    shared_array() noexcept = default;

    /// Does not check the index, because the handle does not know the length.
    T& operator[](std::size_t index) const noexcept { return this->get()[index]; }
};

/// Sole ownership of an array made with `new[]`.
template <typename T>
class scoped_array {
public:
    /// Takes ownership of `p`.
    explicit scoped_array(T* p = nullptr) noexcept : array(p) {}
    scoped_array(const scoped_array&) = delete;
    scoped_array& operator=(const scoped_array&) = delete;
    ~scoped_array() { checked_array_delete(array); }

    /// Frees the present array and takes ownership of `p`. Does nothing if `p` is the present array.
    void reset(T* p = nullptr) {
        if (p == array) return;
        checked_array_delete(array);
        array = p;
    }
    T* get() const noexcept { return array; } ///< Returns the array, still owned; null if there is none.
    /// Does not check the index, because the handle does not know the length.
    T& operator[](std::size_t index) const noexcept { return array[index]; }
    explicit operator bool() const noexcept { return array != nullptr; } ///< True unless null.

private:
    T* array;
};
