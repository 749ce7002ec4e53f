#include "simulation/wmi/WmiErrorDetails.h"

#include <algorithm>
#include <array>

namespace quillon::simulation {

namespace {

/// Each thread's; what is longer is cut. A text that is destroyed with its thread would end the process when
/// there is no memory to note that.
struct Details {
    std::array<wchar_t, 512> text;
    std::size_t size;
};
constinit thread_local Details t_details{};

}  // namespace

void NoteErrorDetails(std::wstring details) {
    t_details.size = std::min(details.size(), t_details.text.size());
    std::copy_n(details.begin(), t_details.size, t_details.text.begin());
}

std::wstring TakeErrorDetails() {
    std::wstring details(t_details.text.data(), t_details.size);
    t_details.size = 0;
    return details;
}

}  // namespace quillon::simulation
