#pragma once

#include <memory>

namespace pond {

// One owned reference to a C object (a Cairo surface or pattern, a GObject),
// released exactly once by `release` when the holder goes away, so that no
// cached surface outlives the painter or leaks when a cache entry is
// replaced.
template <auto release> struct Releaser {
    template <typename T> void operator()(T* object) const noexcept { release(object); }
};

template <typename T, auto release> using Owned = std::unique_ptr<T, Releaser<release>>;

} // namespace pond
