#pragma once

#include <concepts>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmora {

// A shared object that is always there. It is only ever made with make(),
// taken from another one of a derived type, or checked once by checked(),
// so a factory that returns it cannot hand out null and its holders need no
// check. It turns into a plain shared_ptr where one is wanted. Moving
// copies, so that a holder moved from still holds its object.
template <typename T> class NotNullShared {
public:
    template <typename... Arguments> static NotNullShared make(Arguments&&... arguments)
    {
        return NotNullShared(std::make_shared<T>(std::forward<Arguments>(arguments)...));
    }

    // Throws std::invalid_argument for null, naming `what`.
    static NotNullShared checked(std::shared_ptr<T> object, const char* what)
    {
        if (!object)
            throw std::invalid_argument(std::string(what) + " is missing");
        return NotNullShared(std::move(object));
    }

    template <typename Derived>
    requires std::convertible_to<Derived*, T*>
    // Implicit, as a shared_ptr of a derived type converts.
    NotNullShared(const NotNullShared<Derived>& other)
        : m_object(other.shared())
    {
    }

    NotNullShared(const NotNullShared&) = default;
    NotNullShared& operator=(const NotNullShared&) = default;
    NotNullShared(NotNullShared&& other) noexcept { m_object = other.m_object; }
    NotNullShared& operator=(NotNullShared&& other) noexcept
    {
        m_object = other.m_object;
        return *this;
    }
    ~NotNullShared() = default;

    [[nodiscard]] T& operator*() const { return *m_object; }
    [[nodiscard]] T* operator->() const { return m_object.get(); }
    [[nodiscard]] T* get() const { return m_object.get(); }
    [[nodiscard]] const std::shared_ptr<T>& shared() const { return m_object; }

    template <typename Base>
    requires std::convertible_to<T*, Base*>
    operator std::shared_ptr<Base>() const { return m_object; }

private:
    explicit NotNullShared(std::shared_ptr<T> object)
        : m_object(std::move(object))
    {
    }

    std::shared_ptr<T> m_object;
};

} // namespace velmora
