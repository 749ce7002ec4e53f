#include <mntent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <cstdio>
#include <set>
#include <system_error>

#include "platform/native/NativePath.h"
#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

enum DriveType { kLocalDisk = 3, kNetworkDrive = 4, kCompactDisc = 5 };
constexpr int kFixedHardDisk = 12;  // of Win32_LogicalDisk.MediaType

struct Volume {
    std::string source, folder, fileSystem;

    [[nodiscard]] DriveType Type() const {
        if (IsRemote()) return kNetworkDrive;
        return fileSystem == "iso9660" || fileSystem == "udf" ? kCompactDisc : kLocalDisk;
    }
    [[nodiscard]] bool IsRemote() const {
        for (const char* each : {"nfs", "nfs4", "cifs", "smb3", "fuse.sshfs"}) {
            if (fileSystem == each) return true;
        }
        return false;
    }
    [[nodiscard]] std::string Name() const { return folder == "/" ? "C:" : platform::LibraryPath(folder); }
};

struct CloseMounts {
    void operator()(std::FILE* file) const { ::endmntent(file); }
};

std::vector<Volume> ListMounts() {
    std::vector<Volume> mounts;
    const std::unique_ptr<std::FILE, CloseMounts> file(::setmntent("/proc/self/mounts", "re"));
    if (!file) throw std::system_error(errno, std::generic_category(), "The mounts cannot be listed");
    mntent entry{};
    std::vector<char> buffer(std::size_t{1} << 16);
    while (::getmntent_r(file.get(), &entry, buffer.data(), static_cast<int>(buffer.size())) != nullptr) {
        Volume volume{entry.mnt_fsname, entry.mnt_dir, entry.mnt_type};
        std::erase_if(mounts, [&volume](const Volume& each) { return each.folder == volume.folder; });
        mounts.push_back(std::move(volume));  // over what was mounted there before
    }
    return mounts;
}

/// Each device at the first of its places. Another machine's is not asked: it may not answer.
std::vector<Volume> ListVolumes() {
    std::set<dev_t> devices;
    std::vector<Volume> volumes;
    for (Volume& mount : ListMounts()) {
        if (mount.folder != "/" && !mount.source.starts_with("/dev/") && !mount.IsRemote()) continue;
        struct stat found {};
        const bool isNew =
            mount.IsRemote() || (::stat(mount.folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
                                 devices.insert(found.st_dev).second);
        if (isNew) volumes.push_back(std::move(mount));
    }
    return volumes;
}

struct Space {
    std::uint64_t size, free;
};

std::optional<Space> SpaceOf(const Volume& volume) {
    struct statvfs figures {};
    if (::statvfs(volume.folder.c_str(), &figures) != 0) return std::nullopt;
    return Space{figures.f_blocks * figures.f_frsize, figures.f_bavail * figures.f_frsize};
}

std::string DescriptionOf(const Volume& volume) {
    switch (volume.Type()) {
        case kNetworkDrive:
            return "Network Connection";
        case kCompactDisc:
            return "CD-ROM Disc";
        default:
            return "Local Fixed Disk";
    }
}

}  // namespace

WmiClass LogicalDiskClass() {
    using V = Volume&;
    return MakeLiveClass<Volume>(
        L"Win32_LogicalDisk", {L"DeviceID"},
        {
            {L"Availability", CIM_UINT16},
            {L"BlockSize", CIM_UINT64},
            {L"Caption", CIM_STRING, [](V v) { return v.Name(); }},
            {L"Compressed", CIM_BOOLEAN},
            {L"CreationClassName", CIM_STRING, [](V) { return "Win32_LogicalDisk"; }},
            {L"Description", CIM_STRING, [](V v) { return DescriptionOf(v); }},
            {L"DeviceID", CIM_STRING, [](V v) { return v.Name(); }},
            {L"DriveType", CIM_UINT32, [](V v) { return static_cast<int>(v.Type()); }},
            {L"FileSystem", CIM_STRING, [](V v) { return v.fileSystem; }},
            {L"FreeSpace", CIM_UINT64,
             [](V v) {
                 const auto space = SpaceOf(v);
                 return space ? WmiFact(space->free) : WmiFact();
             }},
            {L"InstallDate", CIM_DATETIME},
            {L"MediaType", CIM_UINT32,
             [](V v) { return v.Type() == kLocalDisk ? WmiFact(kFixedHardDisk) : WmiFact(); }},
            {L"Name", CIM_STRING, [](V v) { return v.Name(); }},
            {L"ProviderName", CIM_STRING, [](V v) { return v.IsRemote() ? WmiFact(v.source) : WmiFact(); }},
            {L"Size", CIM_UINT64,
             [](V v) {
                 const auto space = SpaceOf(v);
                 return space ? WmiFact(space->size) : WmiFact();
             }},
            {L"Status", CIM_STRING},
            {L"SystemCreationClassName", CIM_STRING, [](V) { return "Win32_ComputerSystem"; }},
            {L"SystemName", CIM_STRING, [](V) { return NodeName(); }},
            {L"VolumeDirty", CIM_BOOLEAN},
            {L"VolumeName", CIM_STRING},
            {L"VolumeSerialNumber", CIM_STRING},
        },
        ListVolumes);
}

}  // namespace quillon::simulation
