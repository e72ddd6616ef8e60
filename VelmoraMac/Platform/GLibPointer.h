#pragma once

#include <utility>

namespace velmora {

// One reference to a reference-counted GLib object, released exactly once
// when the holder goes away, so that a source or context can never outlive
// the C++ object that attached it by accident. `reference` and `release`
// are the type's ref and unref functions.
template <typename T, auto reference, auto release> class GLibPointer {
public:
    GLibPointer() = default;

    // Takes over a reference the caller already owns (a new object).
    static GLibPointer adopt(T* object) { return GLibPointer(object); }
    // Takes a reference of its own on an object that someone else owns.
    static GLibPointer share(T* object)
    {
        return GLibPointer(object != nullptr ? static_cast<T*>(reference(object)) : nullptr);
    }

    GLibPointer(const GLibPointer&) = delete;
    GLibPointer& operator=(const GLibPointer&) = delete;
    GLibPointer(GLibPointer&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    GLibPointer& operator=(GLibPointer&& other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.m_object, nullptr));
        return *this;
    }
    ~GLibPointer() { reset(); }

    [[nodiscard]] T* get() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    void reset(T* object = nullptr)
    {
        T* released = std::exchange(m_object, object);
        if (released != nullptr)
            release(released);
    }

private:
    explicit GLibPointer(T* object)
        : m_object(object)
    {
    }

    T* m_object = nullptr;
};

} // namespace velmora
