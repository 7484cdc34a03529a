#include "driverhost/DocumentKind.h"

#include <fmt/format.h>

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "driverhost/HostError.h"

namespace fs = std::filesystem;

namespace {

/// The marker stands within the first bytes of every PDF (ISO 32000, annex H).
constexpr std::size_t kMarkerBytes = 1024;

std::string ReadHead(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status))
        throw HostError(kFailed, fmt::format("{} does not exist", path.string()));
    if (!fs::is_regular_file(status))
        throw HostError(kFailed, fmt::format("{} is no file", path.string()));
    std::ifstream file(path, std::ios::binary);
    if (!file) throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
    std::string head(kMarkerBytes, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    if (head.empty()) throw HostError(kFailed, fmt::format("{} is empty", path.string()));
    return head;
}

struct Signature {
    std::string_view Bytes;
    DocumentKind Kind;
};

using std::string_view_literals::operator""sv;

constexpr Signature kSignatures[] = {
    {"\x89PNG\r\n\x1A\n"sv, DocumentKind::kPng},
    {"\xFF\xD8\xFF"sv, DocumentKind::kJpeg},
    // Classic and with 64-bit offsets, of both byte orders.
    {"II*\0"sv, DocumentKind::kTiff},
    {"MM\0*"sv, DocumentKind::kTiff},
    {"II+\0"sv, DocumentKind::kTiff},
    {"MM\0+"sv, DocumentKind::kTiff},
    // An EPS with a screen preview before or after its program.
    {"\xC5\xD0\xD3\xC6"sv, DocumentKind::kPostScript},
};

/// "%!PS-Adobe-3.0 PDF-1.4" is another way to begin a PDF.
bool IsPostScript(std::string_view head) {
    if (head.starts_with('\x04')) head.remove_prefix(1);  // from a serial line's driver
    if (!head.starts_with("%!")) return false;
    return head.substr(0, head.find_first_of("\r\n")).find(" PDF-") == std::string_view::npos;
}

/// The kind that the first bytes say.
std::optional<DocumentKind> KindAtStart(std::string_view head) {
    for (const Signature& signature : kSignatures)
        if (head.starts_with(signature.Bytes)) return signature.Kind;
    if (IsPostScript(head)) return DocumentKind::kPostScript;
    if (head.starts_with("%PDF-")) return DocumentKind::kPdf;
    return std::nullopt;
}

}  // namespace

bool IsArtwork(const fs::path& path) {
    try {
        return KindAtStart(ReadHead(path)).has_value();
    } catch (const HostError&) {
        return false;
    }
}

DocumentKind KindOfDocument(const fs::path& path) {
    const std::string head = ReadHead(path);
    if (const std::optional<DocumentKind> kind = KindAtStart(head)) return *kind;
    // The rasteriser would run a file of another kind as a program.
    if (head.find("%PDF-") == std::string::npos && !head.starts_with("%!PS-Adobe-"))
        throw HostError(kFailed,
                        fmt::format("{} is no PDF, PostScript, TIFF, PNG or JPEG", path.string()));
    return DocumentKind::kPdf;
}
