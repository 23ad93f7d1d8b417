#include <hexmire/support/ProcessState.h>

namespace hexmire::detail {

ProcessState& State() noexcept {
    static ProcessState state;
    return state;
}

}  // namespace hexmire::detail
