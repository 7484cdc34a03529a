#pragma once

#include <string_view>

#include "host/AString.h"

/// What the system says of a name. Where it cannot say whether something stands there, nothing may
/// be taken for missing.
enum class Existence { kExists, kMissing, kUnknown };

/// A path to a folder or file, built from components. '\' and '/' both separate them.
///
/// A path can become invalid (see Append); it then stays so, names nothing, and whatever would be
/// opened or created there fails.
class AFilePath {
  public:
    /// The host's base folder: what QL_BASE_FOLDER names when this path is made, else the
    /// current folder.
    AFilePath();
    /// A path as a host or user gives it, absolute or relative. An empty text is the current
    /// folder.
    explicit AFilePath(std::string_view text);

    /// Appends the components of `name`. Leading separators are dropped. A name that climbs above
    /// this folder ("..") or that starts one of its components with a drive (one letter and ':')
    /// makes the path invalid. Answers this path.
    AFilePath& Append(std::string_view name);
    /// Whether a path that is valid would stay so. Allocates nothing.
    static bool CanAppend(std::string_view name) noexcept;

    bool isValid() const { return valid_; }
    /// Whether a file or folder stands there. `systemError`, where given, receives the system's
    /// number for why it sees none; it stays as it is otherwise. An invalid path is missing.
    Existence LookFor(int* systemError = nullptr) const;
    /// Whether the system says that one stands there.
    bool exists() const { return LookFor() == Existence::kExists; }
    /// With the system's separators and none at the end (but for a root); "" when invalid.
    const AString& fullPath() const { return path_; }
    /// For messages: the full path, or of an invalid one the name that made it so.
    const AString& shownName() const { return valid_ ? path_ : refused_; }
    /// The full path up to and including its last separator; "" when it has none.
    AString folderPart() const;

  private:
    void Invalidate(std::string_view name);

    AString path_;
    AString refused_;  ///< what Append was given
    bool valid_ = true;
};
