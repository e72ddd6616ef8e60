#pragma once

#include <stdexcept>

namespace velmora {

// The system refused to register or unregister the login item; what() says
// why, in the system's words.
class LoginItemError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace velmora
