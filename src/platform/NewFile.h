#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Handle.h"

namespace quillon::platform {

/// A file that is written under a temporary name beside its own, ".quillon-XXXXXXXXXXXXXXXX.part", and takes
/// its own in one step. Until then, and for good when it is dropped, whatever has that name stays as it is.
/// A link in the place of the name is replaced, never followed. The file is locked while it is open, by
/// which the leftovers of a killed process are told from it. A failure is false or nothing, see LastError().
class NewFile {
public:
    enum class IfThere { Replace, Fail };
    /// OwnerOnly: for content that not everybody may read, until the file is given other rights. Encrypted:
    /// the same, by the system as well where it encrypts single files.
    enum class Access { OwnerOnly, Encrypted, AsTheProcessLets };

    /// base::kAccessDenied when a directory, a device or a read-only file has the name. Where a file is
    /// replaced, the new one is its owner's only until TakeSecurity().
    static std::optional<NewFile> Create(const std::string& path, IfThere ifThere, Access access);
    [[nodiscard]] const FileHandle& Handle() const;
    /// Takes over the owner, as far as the process may give files away, and the access of the file that will
    /// be replaced; false when that could leave it to more users than before.
    bool TakeSecurity();
    /// Brings the content and then the name to the disk. When only the name could not be, the file has it,
    /// and false is returned all the same.
    bool Commit();

private:
    struct State;
    /// Removes the file while it has its temporary name; keeps the last error.
    struct Drop {
        void operator()(State* state) const noexcept;
    };
    using OwnState = std::unique_ptr<State, Drop>;

    explicit NewFile(OwnState state) : m_state(std::move(state)) {}
    OwnState m_state;
};

/// Returns a new name of the form ".quillon-XXXXXXXXXXXXXXXX.part".
std::string NewFileName();

}  // namespace quillon::platform
