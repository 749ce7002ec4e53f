#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillon::agent {

// The files of a download; implemented once in posix/ and once in win32/. Paths are the
// library's, in UTF-8. Faults are texts for people, empty when there is none.

/// A file that is read from its beginning to its end. Only regular files can be opened:
/// a pipe could block for ever.
class SourceFile {
public:
    SourceFile();
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    std::string Open(const std::string& path);
    /// Returns the number of bytes; negative when that cannot be told.
    std::int64_t Size() const;
    /// Reads up to `count` bytes, and sets it to how many there were: 0 at the end.
    std::string Read(char* bytes, std::size_t& count);

private:
    friend class DestinationFolder;
    struct State;

    std::unique_ptr<State> m_state;
};

/// A file under a temporary name, which goes with the object unless it was committed.
class NewFile {
public:
    virtual ~NewFile() = default;

    virtual std::string Write(const char* bytes, std::size_t count) = 0;
    /// Puts the file, once it is safe on the disk, in the place of one of its own name. A
    /// link there is replaced, not followed.
    virtual std::string Commit() = 0;
    /// Does the same for a file that DestinationFolder::Sync() has made safe since it was written.
    virtual std::string CommitSynced() { return Commit(); }
};

/// Where content goes. Nothing below the directory is written through a link: one that
/// stands for a directory on the way is a fault.
class DestinationFolder {
public:
    DestinationFolder();
    ~DestinationFolder();
    DestinationFolder(const DestinationFolder&) = delete;
    DestinationFolder& operator=(const DestinationFolder&) = delete;

    /// Makes the directory, and those above it, when it is not there. It may be reached
    /// through links.
    std::string Open(const std::string& path);
    /// Starts the file whose name has these components, making the directories on the way;
    /// they are names, and checked. The file holds on to its directory, not to this.
    std::string Create(const std::vector<std::string>& components, std::unique_ptr<NewFile>& file);
    /// Opens what is there under such a name, for reading; nothing is made and no link followed.
    std::string OpenExisting(const std::vector<std::string>& components, SourceFile& file);
    /// Makes all files that were written safe on the disk at once, which costs as much as one of them
    /// alone. False where the system cannot.
    bool Sync();

private:
    struct State;

    std::unique_ptr<State> m_state;
};

}  // namespace quillon::agent
