#pragma once

/// @file
/// Declares owning pointers with shared or sole ownership. The reference counts are plain integers. Only one
/// thread at a time may use a handle and its copies.

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

/// Deletes an array that `new[]` has allocated. Does not compile if the type is incomplete.
template <typename T>
void checked_array_delete(T* p) {
    static_assert(sizeof(T) != 0, "the type must be complete where its objects are deleted");
    delete[] p;
}

namespace smart_ptr_detail {

template <typename T>
struct UseCounter {
    unsigned int uses;
    void (*dispose)(UseCounter*, T* object); ///< Frees the object and the counter.
};

/// The counter of all null handles. The count is always 1. A null handle needs no allocation.
template <typename T>
inline UseCounter<T> gNullCounter = {1, nullptr};

/// A handle with shared ownership. `deleter` frees the object.
template <typename T, void (*deleter)(T*)>
class SharedHandle {
    using CounterType = UseCounter<T>;

public:
    SharedHandle() noexcept = default;
    /// Takes ownership of `p`, which may be null. Throws `std::bad_alloc` after `deleter` has freed `p`.
    explicit SharedHandle(T* p) {
        if (!p) return;
        std::unique_ptr<T, void (*)(T*)> guard(p, deleter);
        counter = new CounterType{1, &DisposeBoth};
        object = guard.release();
    }
    SharedHandle(const SharedHandle& other) noexcept : object(other.object), counter(other.counter) {
        if (object) ++counter->uses;
    }
    SharedHandle(SharedHandle&& other) noexcept : object(other.object), counter(other.counter) {
        other.object = nullptr;
        other.counter = &gNullCounter<T>;
    }
    SharedHandle& operator=(SharedHandle other) noexcept {
        swap(other);
        return *this;
    }
    ~SharedHandle() {
        if (object && --counter->uses == 0) counter->dispose(counter, object);
    }

    void swap(SharedHandle& other) noexcept {
        std::swap(object, other.object);
        std::swap(counter, other.counter);
    }

    /// Releases the present object and takes ownership of `p`, which may be null. Does nothing if `p` is the
    /// present object. Throws `std::bad_alloc` after `p` has been freed. The handle then keeps the present
    /// object.
    void reset(T* p = nullptr) {
        if (p != object) SharedHandle(p).swap(*this);
    }

    T* get() const noexcept { return object; }
    /// Returns the number of handles that share the object. Returns 1 for a null handle.
    unsigned int use_count() const noexcept { return counter->uses; }
    explicit operator bool() const noexcept { return object != nullptr; }

protected:
    /// The counter and the object in one allocation.
    struct Block : CounterType {
        template <typename... Arguments>
        explicit Block(Arguments&&... arguments)
            : CounterType{1, &DisposeBlock}, value(std::forward<Arguments>(arguments)...) {}
        T value;
    };
    explicit SharedHandle(Block* b) noexcept : object(&b->value), counter(b) {}

private:
    static void DisposeBoth(CounterType* counter, T* object) {
        deleter(object);
        delete counter;
    }
    static void DisposeBlock(CounterType* counter, T*) { delete static_cast<Block*>(counter); }

    T* object = nullptr;
    CounterType* counter = &gNullCounter<T>;
};

} // namespace smart_ptr_detail

/// Shares the ownership of one object.
template <typename T>
class shared_ptr : public smart_ptr_detail::SharedHandle<T, &checked_delete<T>> {
    using Base = smart_ptr_detail::SharedHandle<T, &checked_delete<T>>;

public:
    using Base::Base;
    shared_ptr() noexcept = default;

    /// Creates the object and its counter in one allocation.
    template <typename... Arguments>
    static shared_ptr Make(Arguments&&... arguments) {
        return shared_ptr(new typename Base::Block(std::forward<Arguments>(arguments)...));
    }

    ///@{
    /// Returns the object. The handle must not be null.
    T& operator*() const noexcept { return *this->get(); }
    T* operator->() const noexcept { return this->get(); }
    ///@}

private:
    explicit shared_ptr(typename Base::Block* b) noexcept : Base(b) {}
};

/// Shares the ownership of an array that `new[]` has allocated.
template <typename T>
class shared_array : public smart_ptr_detail::SharedHandle<T, &checked_array_delete<T>> {
public:
    using smart_ptr_detail::SharedHandle<T, &checked_array_delete<T>>::SharedHandle;
    shared_array() noexcept = default;

    /// Returns an element. The index is not checked, because the handle does not store the length.
    T& operator[](std::size_t index) const noexcept { return this->get()[index]; }
};

/// Owns an array that `new[]` has allocated.
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
    T* get() const noexcept { return array; } ///< Returns the array or null. Keeps the ownership.
    /// Returns an element. The index is not checked, because the handle does not store the length.
    T& operator[](std::size_t index) const noexcept { return array[index]; }
    explicit operator bool() const noexcept { return array != nullptr; } ///< True unless null.

private:
    T* array;
};
