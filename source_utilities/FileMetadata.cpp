#include "source_utilities/FileMetadata.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

namespace ZU_WEP {

namespace {

constexpr char kAcl[] = "system.posix_acl_access";
/// The kernel takes these away, or makes them anew, when a file is written.
constexpr const char* kOfContent[] = {"security.capability", "security.evm", "security.ima"};

std::string WhatIs(const std::string& attribute) { return attribute == kAcl ? "ACL" : "attribute " + attribute; }

/// What `read(buffer, size)` gives, which says how much there is where size is 0.
template <class Read>
std::optional<std::string> ReadWhole(Read read) {
    std::string value;
    ssize_t size = 0;
    do {
        size = read(nullptr, 0);
        value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        size = size > 0 ? read(value.data(), value.size()) : size;
    } while (size < 0 && errno == ERANGE);  // it has grown meanwhile
    value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return size < 0 ? std::nullopt : std::optional(value);
}

std::optional<std::string> Value(const PosixFile& file, const char* name) {
    return ReadWhole(
        [&](char* buffer, std::size_t size) { return ::fgetxattr(file.Descriptor(), name, buffer, size); });
}

/// Leaves alone what is right already, which the process may have no right to change; so does ChangeOwner.
bool SetAttribute(const PosixFile& file, const std::string& name, const std::string& value) {
    return Value(file, name.c_str()) == value ||
           ::fsetxattr(file.Descriptor(), name.c_str(), value.data(), value.size(), 0) == 0;
}

bool ChangeOwner(const PosixFile& file, const struct stat& now, uid_t owner, gid_t group) {
    return (now.st_uid == owner && now.st_gid == group) || ::fchown(file.Descriptor(), owner, group) == 0;
}

bool Refuse() {
    errno = EPERM;
    return false;
}

/// A new file may have one from its directory.
bool RemoveAcl(const PosixFile& file) {
    return ::fremovexattr(file.Descriptor(), kAcl) == 0 || errno == ENODATA || errno == ENOTSUP;
}

/// The group gets what everybody has.
mode_t GroupAsOthers(mode_t mode) { return (mode & ~static_cast<mode_t>(S_IRWXG | S_ISGID)) | ((mode & S_IRWXO) << 3); }

}  // namespace

FileMetadata::FileMetadata(const PosixFile& file, const struct stat& status)
    : m_owner(status.st_uid), m_group(status.st_gid), m_mode(status.st_mode & kPermissionBits) {
    ReadAttributes(file);
}

void FileMetadata::ReadAttributes(const PosixFile& file) {
    const auto list = [&](char* buffer, std::size_t size) { return ::flistxattr(file.Descriptor(), buffer, size); };
    const auto names = ReadWhole(list);
    if (!names && errno != ENOTSUP) {
        m_unread.push_back({"extended attributes", errno == EBADF ? EACCES : errno});  // EBADF: one of O_PATH
        m_knowsAcl = false;
    }
    for (std::size_t at = 0; names && at < names->size();) {
        const std::string name = names->c_str() + at;
        at += name.size() + 1;
        if (std::find(std::begin(kOfContent), std::end(kOfContent), name) != std::end(kOfContent)) {
            continue;
        }
        if (auto value = Value(file, name.c_str())) {
            m_attributes.emplace_back(name, std::move(*value));
        } else if (errno != ENODATA) {  // it is gone meanwhile
            m_unread.push_back({WhatIs(name), errno});
            m_knowsAcl = m_knowsAcl && name != kAcl;
        }
    }
}

bool FileMetadata::HasAcl() const {
    return std::any_of(m_attributes.begin(), m_attributes.end(),
                       [](const Attribute& attribute) { return attribute.first == kAcl; });
}

mode_t FileMetadata::ModeWithoutAcl() const { return HasAcl() || !m_knowsAcl ? GroupAsOthers(m_mode) : m_mode; }

std::vector<FileMetadata::Loss> FileMetadata::GiveTo(const PosixFile& file, Part part, mode_t most) const {
    const bool isAll = part == Part::All;
    std::vector<Loss> losses = isAll ? m_unread : std::vector<Loss>();
    const auto given = [&](const std::string& what, bool isGiven) {
        if (!isGiven) {
            losses.push_back({what, errno});
        }
        return isGiven;
    };
    struct stat own {};
    if (!given("mode", ::fstat(file.Descriptor(), &own) == 0)) {
        return losses;
    }
    const uid_t owner = isAll ? m_owner : own.st_uid;
    const bool isOwned = ChangeOwner(file, own, owner, m_group);  // first, since it takes rights away (chown(2))
    const bool hasOwner = isOwned || given("owner", owner == own.st_uid);
    const bool hasGroup = isOwned || given("group", ChangeOwner(file, own, own.st_uid, m_group));
    bool hasAcl = given(WhatIs(kAcl), RemoveAcl(file)) && m_knowsAcl;
    for (const auto& [name, value] : m_attributes) {
        if (name == kAcl) {
            hasAcl = given(WhatIs(name), hasGroup ? SetAttribute(file, name, value) : Refuse());
        } else if (isAll) {
            given(WhatIs(name), SetAttribute(file, name, value));
        }
    }
    mode_t mode = m_mode & most & ~static_cast<mode_t>(isAll && hasOwner ? 0 : S_ISUID);
    mode = hasGroup && hasAcl ? mode : GroupAsOthers(mode);
    given("mode", ::fchmod(file.Descriptor(), mode) == 0);
    return losses;
}

}  // namespace ZU_WEP
