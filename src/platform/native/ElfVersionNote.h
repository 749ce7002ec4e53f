#pragma once

#include <optional>

#include "base/PeVersionResource.h"

namespace quillon::platform {

/// The version texts of an ELF file of ours: the note of type 1 and owner "Quillon",
/// "NAME=TEXT" lines that end with a zero each. They have one language, 0409 04b0;
/// the fixed versions are those of the texts "FileVersion" and "ProductVersion".
/// Bounded and checked as ReadPeVersion. Nothing when the file has no such note.
std::optional<base::VersionTexts> ReadElfVersion(const base::ReadBytesAt& read);

}  // namespace quillon::platform
