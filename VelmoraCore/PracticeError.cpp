#include "PracticeError.h"

namespace velmora {

const char* PracticeError::what() const noexcept
{
    switch (m_kind) {
    case invalidData:
        return "practice data is invalid";
    case notSelected:
        return "topic is not selected";
    case notLoaded:
        return "practice state is not loaded";
    }
    return "practice error";
}

} // namespace velmora
