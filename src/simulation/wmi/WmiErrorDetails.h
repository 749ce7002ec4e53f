#pragma once

#include <string>

namespace quillon::simulation {

/// What WMI tells of a failure beside its code, for the thread whose call has failed.
void NoteErrorDetails(std::wstring details);
/// Returns the last note of this thread and forgets it.
std::wstring TakeErrorDetails();

}  // namespace quillon::simulation
