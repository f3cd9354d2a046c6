#pragma once

namespace basics {

/// Who may do what with a file, handed on from one that is to be replaced to the one that replaces it: owner,
/// group, mode, access control list, and the attributes "user.*" and the SELinux label where they can be.
///
/// The new file is to have the mode 0600 and its content already; nobody gets at that who could not get at
/// the old file's. Who may not give files away becomes the owner of the new one. Where the group cannot be
/// kept either, other people and the new group are left with what both had; where there is an access
/// control list that cannot be kept, everything is the owner's alone.
///
/// `replaced` may be a descriptor of O_PATH. 0, or the error by which the new file has not got the mode that
/// it needs.
[[nodiscard]] int HandOnAccess(int replaced, int file) noexcept;

}  // namespace basics
