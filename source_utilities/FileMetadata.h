#pragma once

#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "source_utilities/PosixFile.h"

namespace ZU_WEP {

/// What a file has beside its content, and keeps when another takes its place: owner, group, mode and extended
/// attributes (xattr(7)), the ACL (acl(5)) among them. Attributes that the process is not shown, such as those in
/// `trusted`, are none of it; nor are those that the kernel makes for a content and takes away with it.
class FileMetadata {
  public:
    enum class Part {
        All,
        Rights  ///< group, mode and ACL: who may do what, but for the owner
    };
    /// Something that was not kept, such as "owner", "ACL" or "attribute user.note", and the `errno` that tells why.
    struct Loss {
        std::string what;
        int error;
    };
    static constexpr mode_t kPermissionBits = 07777;

    /// Of an open file; `status` is what fstat(2) gives. A descriptor of O_PATH shows no attributes.
    FileMetadata(const PosixFile& file, const struct stat& status);

    /// Gives it to another file, which nobody else may do anything with yet; gives what is lost. That file gets no
    /// permission bit outside `most`, and at no moment gives anybody a right that he has not here: without its group,
    /// or its ACL, a group may do what everybody may.
    std::vector<Loss> GiveTo(const PosixFile& file, Part part = Part::All, mode_t most = kPermissionBits) const;

    /// Its mode, where there is an ACL with what everybody may in place of what the ACL allows at most.
    mode_t ModeWithoutAcl() const;

  private:
    using Attribute = std::pair<std::string, std::string>;

    void ReadAttributes(const PosixFile& file);
    bool HasAcl() const;

    uid_t m_owner;
    gid_t m_group;
    mode_t m_mode;
    std::vector<Attribute> m_attributes;
    std::vector<Loss> m_unread;
    bool m_knowsAcl = true;  ///< whether it has one, and which
};

}  // namespace ZU_WEP
