#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What the rasteriser writes while it runs, of which little concerns a user.

/// What a run did.
enum class RasterizerRun {
    kProgram,     ///< ran a PostScript program, which may write what it likes
    kPageReport,  ///< listed a document's pages
    kPages        ///< drew pages
};

/// What a run complains about, each thing once: fonts that are replaced, damage that is repaired,
/// operators that are passed over. Each is printable, in one line, of a length that a person reads.
std::vector<std::string> ComplaintsIn(std::string_view log, RasterizerRun run);

/// Why a run failed, as far as its log says; "no reason given" when it does not.
std::string FailureIn(std::string_view log);
