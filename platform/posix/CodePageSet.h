#pragma once

#include "platform/posix/CharacterSet.h"

/// The code page as iconv sees it.
struct CodePageSet {
    /// What QL_CODE_PAGE says; null for UTF-8, which is also what an unknown name stands for.
    const char* Name = nullptr;
    bool IsKnown = true;  ///< the system knows what QL_CODE_PAGE says, or it says nothing
    CharacterSet Characters;
};

/// The code page of this moment. Characters are learned once and kept, so this allocates nothing
/// but when it meets a name for the first time. When the system cannot open the set, because
/// memory or files are gone, `Name` is there and no character has several bytes.
CodePageSet CurrentCodePage() noexcept;
