#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/KeptError.h"
#include "platform/NewFile.h"
#include "platform/native/NativePath.h"
#include "platform/posix/AccessList.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FileModes.h"

namespace quillon::platform {

namespace {

constexpr mode_t kPermissions = 0777;

/// A file that is copied: open, regular, and as it was when it was opened.
struct Source {
    bool Open(const std::string& path, int flags);
    [[nodiscard]] bool IsAsItWas() const;

    FileHandle file;
    struct ::stat facts {};
};

bool Source::Open(const std::string& path, int flags) {
    const auto native = NativePath(path);
    const int all = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | flags;
    file.Reset(native ? ::open(native->c_str(), all) : -1);
    if (!file || ::fstat(file.Get(), &facts) != 0) return FailWithErrno();
    return S_ISREG(facts.st_mode) || FailWithCode(base::kAccessDenied);
}

bool IsSameFile(const struct ::stat& a, const struct ::stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Returns whether it is the file that was opened, and holds what it held then: what is written to it later
/// is in no copy.
bool IsUnchanged(const struct ::stat& now, const struct ::stat& then) {
    return IsSameFile(now, then) && now.st_size == then.st_size &&
           now.st_mtim.tv_sec == then.st_mtim.tv_sec && now.st_mtim.tv_nsec == then.st_mtim.tv_nsec;
}

bool KeepForOwner(const FileHandle& file) {
    return ::fchmod(file.Get(), S_IRUSR | S_IWUSR) == 0 || FailWithErrno();
}

bool Source::IsAsItWas() const {
    struct ::stat now {};
    if (::fstat(file.Get(), &now) != 0) return FailWithErrno();
    return IsUnchanged(now, facts) || FailWithCode(base::kSharingViolation);
}

/// Gives the copy what the copy of Windows takes along in addition to the content.
bool TakeModeAndTime(const struct ::stat& source, const FileHandle& target) {
    const ::timespec times[] = {{0, UTIME_OMIT}, source.st_mtim};
    return (::fchmod(target.Get(), source.st_mode & kPermissions) == 0 &&
            ::futimens(target.Get(), times) == 0) ||
           FailWithErrno();
}

/// Gives the copy the extended attributes that users set, and capabilities if it `isOwned` by the same user
/// as the source. Not every file system has them, and the content is whole without them.
void TakeAttributes(const FileHandle& source, const FileHandle& target, bool isOwned) {
    constexpr std::size_t kMost = 64 * 1024;  // of all names, and of one value
    std::string names(kMost, '\0'), value(kMost, '\0');
    const ::ssize_t length = ::flistxattr(source.Get(), names.data(), names.size());
    names.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    for (std::size_t at = 0; at < names.size();) {
        const char* const name = names.c_str() + at;
        const std::string_view text = name;
        at += text.size() + 1;
        if (!text.starts_with("user.") && !(isOwned && text == "security.capability")) continue;
        const ::ssize_t size = ::fgetxattr(source.Get(), name, value.data(), value.size());
        if (size >= 0) ::fsetxattr(target.Get(), name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

/// Gives the copy all that a moved file keeps. Only root may give files away.
bool TakeAll(const Source& source, const FileHandle& target) {
    constexpr mode_t kAllBits = 07777;
    const struct ::stat& facts = source.facts;
    const bool isGiven = ::fchown(target.Get(), facts.st_uid, facts.st_gid) == 0;
    const ::timespec times[] = {facts.st_atim, facts.st_mtim};
    TakeAttributes(source.file, target, isGiven);
    const bool isTaken = CopyAccess(source.file.Get(), target.Get(), facts.st_mode & kAllBits, isGiven) &&
                         ::futimens(target.Get(), times) == 0;
    return isTaken || FailWithErrno();
}

/// A name in a directory that stays open, so that a link which takes the directory's place leads to no file
/// elsewhere, and that nothing else is needed to remove the name.
class Entry {
public:
    bool Open(const std::string& native);
    /// Returns whether the file could be removed, so that nothing is replaced for a move that cannot end.
    [[nodiscard]] bool MayRemove() const;
    [[nodiscard]] bool IsThere() const;
    /// Removes the name, unless another file has it by now, or the file was written to: what was put there in
    /// the last moment is seen under a name that nobody else knows, and gets its own back.
    [[nodiscard]] bool RemoveSame(const struct ::stat& facts) const;

private:
    [[nodiscard]] bool HasFile(const std::string& name, const struct ::stat& facts) const;
    [[nodiscard]] bool Rename(const std::string& from, const std::string& to) const;
    [[nodiscard]] bool Unlink(const std::string& name) const;

    FileHandle m_directory;
    std::string m_name;
};

bool Entry::Open(const std::string& native) {
    const std::size_t begin = native.rfind('/') + 1;  // 0 when there is none
    m_name = native.substr(begin);
    const std::string folder = begin == 0 ? "." : native.substr(0, begin);
    m_directory.Reset(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return m_directory || FailWithErrno();
}

bool Entry::MayRemove() const { return MayRemoveAt(m_directory.Get(), m_name.c_str()); }

bool Entry::IsThere() const {
    struct ::stat ignored {};
    return ::fstatat(m_directory.Get(), m_name.c_str(), &ignored, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Entry::HasFile(const std::string& name, const struct ::stat& facts) const {
    struct ::stat now {};
    if (::fstatat(m_directory.Get(), name.c_str(), &now, AT_SYMLINK_NOFOLLOW) != 0) return FailWithErrno();
    return IsUnchanged(now, facts) || FailWithCode(base::kSharingViolation);
}

bool Entry::Rename(const std::string& from, const std::string& to) const {
    const int folder = m_directory.Get();
    return ::renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0;
}

bool Entry::Unlink(const std::string& name) const {
    return ::unlinkat(m_directory.Get(), name.c_str(), 0) == 0 || FailWithErrno();
}

bool Entry::RemoveSame(const struct ::stat& facts) const {
    if (!HasFile(m_name, facts)) return false;
    const std::string aside = NewFileName();
    if (!Rename(m_name, aside)) return Unlink(m_name);  // not every file system can rename so
    if (HasFile(aside, facts) && Unlink(aside)) return true;
    const KeptError error;
    return Rename(aside, m_name) && false;
}

/// Removes the original of a copy. When it must stay, the name that was free becomes so again, unless the
/// original has lost its own, for then the copy may be all that there is.
bool FinishMove(const Entry& original, const Source& source, const Entry& copy, const NewFile& target,
                NewFile::IfThere ifThere) {
    if (original.RemoveSame(source.facts)) return true;
    const KeptError error;
    struct ::stat facts {};
    const bool isUndone = ifThere == NewFile::IfThere::Fail && original.IsThere() &&
                          ::fstat(target.Handle().Get(), &facts) == 0;
    return isUndone && copy.RemoveSame(facts) && false;
}

bool MoveToOtherVolume(const std::string& from, const std::string& to, NewFile::IfThere ifThere) {
    const auto attributes = AttributesOf(from);
    if (!attributes || attributes->isDirectory || attributes->isLink) {
        errno = EXDEV;
        return FailWithErrno();
    }
    const auto fromName = NativeName(from), toName = NativeName(to);
    if (!fromName || !toName) return FailWithErrno();
    Source source;
    Entry original, copy;
    if (!original.Open(*fromName) || !copy.Open(*toName) || !original.MayRemove() ||
        !source.Open(from, O_NOFOLLOW))
        return false;
    auto target = NewFile::Create(to, ifThere, NewFile::Access::OwnerOnly);
    if (!target || !CopyContent(source.file, target->Handle()) || !TakeAll(source, target->Handle()) ||
        !source.IsAsItWas())
        return false;
    return target->Commit() && FinishMove(original, source, copy, *target, ifThere);
}

/// Moves a file on file systems that cannot rename without replacing.
bool MoveToFreeName(const char* from, const char* to) {
    struct ::stat status {};
    if (::lstat(to, &status) == 0) errno = EEXIST;
    return (errno == ENOENT && ::rename(from, to) == 0) || FailWithErrno();
}

}  // namespace

bool CopyFileOver(const std::string& from, const std::string& to) {
    Source source;
    if (!source.Open(from, 0)) return false;
    const auto native = NativePath(to);
    struct ::stat old {};
    if (native && ::stat(native->c_str(), &old) == 0 && IsSameFile(source.facts, old))
        return FailWithCode(base::kSharingViolation);
    auto target = NewFile::Create(to, NewFile::IfThere::Replace, NewFile::Access::OwnerOnly);
    // A file that only some users may read must not be readable for others while it is copied.
    return target && target->TakeSecurity() && KeepForOwner(target->Handle()) &&
           CopyContent(source.file, target->Handle()) && TakeModeAndTime(source.facts, target->Handle()) &&
           target->Commit();
}

bool MovePath(const std::string& from, const std::string& to) {
    const auto source = NativeName(from), target = NativeName(to);
    if (!source || !target) return FailWithErrno();
    if (::renameat2(AT_FDCWD, source->c_str(), AT_FDCWD, target->c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno == EXDEV) return MoveToOtherVolume(from, to, NewFile::IfThere::Fail);
    if (errno == EINVAL || errno == ENOSYS) return MoveToFreeName(source->c_str(), target->c_str());
    return FailWithErrno();
}

bool MoveOverFile(const std::string& from, const std::string& to) {
    const auto source = NativeName(from), target = NativeName(to);
    struct ::stat old {};
    if (!source || !target || ::lstat(target->c_str(), &old) != 0) return FailWithErrno();
    if (IsReadOnly(old) || IsSpecial(old)) return FailWithCode(base::kAccessDenied);
    if (::rename(source->c_str(), target->c_str()) == 0) return true;
    return errno == EXDEV ? MoveToOtherVolume(from, to, NewFile::IfThere::Replace) : FailWithErrno();
}

}  // namespace quillon::platform
