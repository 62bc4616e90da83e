#include "tests/faults/DiskRecording.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace stmdcm_test {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kSector = 512;

/// Writes each sector, and the size of a file that grows, if it lasts.
template <class Lasts>
void WriteSectors(std::string& file, std::uint64_t from, const std::string& bytes, Lasts lasts) {
    const std::uint64_t end = from + bytes.size();
    for (std::uint64_t at = from; at < end;) {
        const std::uint64_t next = std::min(end, (at / kSector + 1) * kSector);
        if (lasts()) {
            file.resize(std::max<std::size_t>(file.size(), next));
            file.replace(at, next - at, bytes, at - from, next - at);
        }
        at = next;
    }
    if (lasts()) {
        file.resize(std::max<std::size_t>(file.size(), end));
    }
}

}  // namespace

DiskRecording::DiskRecording(const FaultMachine& machine, const Snapshot& files,
                             const std::vector<std::string>& command)
    : m_folder(machine.Folder()) {
    machine.Reset(files);
    for (const auto& [name, bytes] : files) {
        struct stat info {};
        ::stat((m_folder + "/" + name).c_str(), &info);
        m_before.names[name] = info.st_ino;
        m_before.files[info.st_ino] = bytes;
    }
    machine.Run(command, {"record"});
    const std::string recording = machine.Recording();
    for (std::size_t at = 0; at < recording.size(); at += sizeof(DiskChange) + m_changes.back().size) {
        Change& change = m_changes.emplace_back();
        std::memcpy(static_cast<DiskChange*>(&change), recording.data() + at, sizeof(DiskChange));
        change.bytes = recording.substr(at + sizeof(DiskChange), change.size);
    }
    std::map<std::uint64_t, std::size_t> syncs;  // of each file and folder, the first behind the change
    for (std::size_t i = m_changes.size(); i-- > 0;) {
        Change& change = m_changes[i];
        const auto sync = syncs.find(change.kind == DiskChange::Name ? change.at : change.inode);
        change.synced = sync != syncs.end() ? sync->second : change.synced;
        if (change.kind == DiskChange::Sync) {
            syncs[change.inode] = i;
        }
    }
}

void DiskRecording::Rename(Disk& disk, const Change& change) const {
    const auto inside = [&](const std::string& path) {
        return (fs::path(m_folder) / path).lexically_normal().lexically_relative(m_folder).string();
    };
    const std::size_t end = change.bytes.find('\0');
    const std::string from = inside(change.bytes.substr(end + 1)), to = inside(change.bytes.substr(0, end));
    bool isFolder = false;
    for (auto each = disk.names.lower_bound(from + "/");
         each != disk.names.end() && each->first.starts_with(from + "/"); each = disk.names.erase(each)) {
        disk.names[to + each->first.substr(from.size())] = each->second;
        isFolder = true;
    }
    disk.names.erase(from);
    if (!isFolder) {
        disk.names[to] = change.inode;
    }
}

Snapshot DiskRecording::After(std::size_t changes, unsigned lucky, std::mt19937& random) const {
    Disk disk = m_before;
    for (std::size_t i = 0; i < changes; ++i) {
        const Change& change = m_changes[i];
        const auto lasts = [&] { return change.synced < changes || random() % 100 < lucky; };
        std::string& file = disk.files[change.inode];
        if (change.kind == DiskChange::Create) {
            file.clear();
        } else if (change.kind == DiskChange::Truncate && lasts()) {
            file.resize(change.at);
        } else if (change.kind == DiskChange::Write) {
            WriteSectors(file, change.at, change.bytes, lasts);
        } else if (change.kind == DiskChange::Name && !disk.late.contains(change.at) && lasts()) {
            Rename(disk, change);
        } else if (change.kind == DiskChange::Name) {
            disk.late.insert(change.at);
        }
    }
    Snapshot files;
    for (const auto& [name, inode] : disk.names) {
        if (name != "." && !name.starts_with("..")) {  // nowhere, outside
            files[name] = disk.files[inode];
        }
    }
    return files;
}

}  // namespace stmdcm_test
