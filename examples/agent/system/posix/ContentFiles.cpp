#include "system/ContentFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <set>
#include <system_error>
#include <utility>

#include "common/TemporaryName.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "system/posix/Descriptor.h"
#include "system/posix/Leftovers.h"

namespace quillon::agent {

namespace {

constexpr mode_t kFolderMode = 0700, kFileMode = 0644;
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr int kReadFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

std::string LastFault() { return std::generic_category().message(errno); }

/// Repeats a call while a signal interrupts it.
template <class Call>
auto Retried(const Call& call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

std::string FaultOfKind(const Descriptor& file, struct stat& facts) {
    if (::fstat(file.Get(), &facts) != 0) return LastFault();
    return S_ISREG(facts.st_mode) ? "" : "not a regular file";
}

class PosixNewFile final : public NewFile {
public:
    PosixNewFile(std::shared_ptr<const Descriptor> folder, std::string name)
        : m_folder(std::move(folder)), m_name(std::move(name)) {}
    ~PosixNewFile() override {
        if (m_file && !m_isCommitted) ::unlinkat(m_folder->Get(), m_temporary.c_str(), 0);
    }

    std::string Open() {
        m_file = Descriptor(Retried([this] {
            return ::openat(m_folder->Get(), m_temporary.c_str(),
                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode);
        }));
        if (!m_file) return LastFault();
        return LockTemporary(m_file.Get()) ? "" : "its temporary file was removed";
    }

    std::string Write(const char* bytes, std::size_t count) override {
        while (count > 0) {
            const ssize_t written = Retried([&] { return ::write(m_file.Get(), bytes, count); });
            if (written < 0) return LastFault();
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
        return {};
    }

    std::string Commit() override {
        if (Retried([this] { return ::fdatasync(m_file.Get()); }) != 0) return LastFault();
        return PutInPlace();
    }

    std::string CommitSynced() override {
        // Not every kernel tells a sync of all files about a fault of one; this does, and writes nothing.
        if (::sync_file_range(m_file.Get(), 0, 0, SYNC_FILE_RANGE_WAIT_BEFORE) != 0) return Commit();
        return PutInPlace();
    }

private:
    std::string PutInPlace() {
        if (::renameat(m_folder->Get(), m_temporary.c_str(), m_folder->Get(), m_name.c_str()) != 0)
            return LastFault();
        m_isCommitted = true;
        return {};
    }

    const std::shared_ptr<const Descriptor> m_folder;
    Descriptor m_file;
    const std::string m_name;
    const std::string m_temporary = MakeTemporaryName();
    bool m_isCommitted = false;
};

/// Makes a directory and those above it where they are missing, for the agent alone whatever its mask is.
void MakeFolders(const std::string& path) {
    for (std::size_t end = 0; end != std::string::npos;) {
        end = path.find('/', end + 1);
        ::mkdir(path.substr(0, end).c_str(), kFolderMode);
    }
}

/// Makes the directory when it is not there; never through a link.
std::string Descend(std::shared_ptr<const Descriptor>& folder, const std::string& name) {
    if (::mkdirat(folder->Get(), name.c_str(), kFolderMode) != 0 && errno != EEXIST) return LastFault();
    Descriptor next(
        Retried([&] { return ::openat(folder->Get(), name.c_str(), kFolderFlags | O_NOFOLLOW); }));
    if (!next) {
        const bool isLink = errno == ELOOP || errno == ENOTDIR;  // the kernel says either
        return isLink ? "a link or a file stands in the place of a folder" : LastFault();
    }
    folder = std::make_shared<const Descriptor>(std::move(next));
    return {};
}

}  // namespace

struct SourceFile::State {
    Descriptor file;
    struct stat facts = {};  ///< as they were when it was opened
};

SourceFile::SourceFile() : m_state(std::make_unique<State>()) {}
SourceFile::~SourceFile() = default;

std::string SourceFile::Open(const std::string& path) {
    const std::string name = PathUtils::ToSystemPath(path);
    m_state->file = Descriptor(Retried([&] { return ::open(name.c_str(), kReadFlags); }));
    return m_state->file ? FaultOfKind(m_state->file, m_state->facts) : LastFault();
}

std::string SourceFile::Read(char* bytes, std::size_t& count) {
    const ssize_t size = Retried([&] { return ::read(m_state->file.Get(), bytes, count); });
    count = size < 0 ? 0 : static_cast<std::size_t>(size);
    return size < 0 ? LastFault() : "";
}

std::int64_t SourceFile::Size() const { return m_state->facts.st_size; }

struct DestinationFolder::State {
    std::shared_ptr<const Descriptor> root = std::make_shared<const Descriptor>();
    std::set<std::vector<std::string>> swept;  ///< directories below it that hold no leftovers any more
};

DestinationFolder::DestinationFolder() : m_state(std::make_unique<State>()) {}
DestinationFolder::~DestinationFolder() = default;

std::string DestinationFolder::Open(const std::string& path) {
    const std::string name = PathUtils::ToSystemPath(path);
    if (!FileSystemUtils::Exists(path)) MakeFolders(name);
    Descriptor root(Retried([&] { return ::open(name.c_str(), kFolderFlags); }));
    m_state->root = std::make_shared<const Descriptor>(std::move(root));
    return *m_state->root ? std::string() : LastFault();
}

std::string DestinationFolder::Create(const std::vector<std::string>& components,
                                      std::unique_ptr<NewFile>& file) {
    std::shared_ptr<const Descriptor> folder = m_state->root;
    for (std::size_t i = 0; i + 1 < components.size(); ++i) {
        const std::string fault = Descend(folder, components[i]);
        if (!fault.empty()) return fault;
    }
    const std::vector<std::string> above(components.begin(), components.end() - 1);
    if (m_state->swept.insert(above).second) RemoveLeftovers(folder->Get());
    auto made = std::make_unique<PosixNewFile>(std::move(folder), components.back());
    const std::string fault = made->Open();
    if (fault.empty()) file = std::move(made);
    return fault;
}

std::string DestinationFolder::OpenExisting(const std::vector<std::string>& components, SourceFile& file) {
    Descriptor folder;
    const auto last = components.size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
        const int above = i == 0 ? m_state->root->Get() : folder.Get();
        const int flags = (i < last ? kFolderFlags : kReadFlags) | O_NOFOLLOW;
        Descriptor next(Retried([&] { return ::openat(above, components[i].c_str(), flags); }));
        if (!next) return LastFault();
        folder = std::move(next);
    }
    file.m_state->file = std::move(folder);
    return FaultOfKind(file.m_state->file, file.m_state->facts);
}

bool DestinationFolder::Sync() { return ::syncfs(m_state->root->Get()) == 0; }

}  // namespace quillon::agent
