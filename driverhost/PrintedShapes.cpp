#include "driverhost/PrintedShapes.h"

#include <algorithm>
#include <system_error>

#include "driverhost/ChannelFile.h"
#include "driverhost/HostError.h"

namespace fs = std::filesystem;

namespace {

/// A job folder and a page's folder in it lie between a channel file and the record.
constexpr int kMostFolders = 3;

/// Records are small: a page takes some hundred bytes.
constexpr std::uintmax_t kMostRecordBytes = std::uintmax_t{64} << 20;

std::optional<PrintRecord> TryRecord(const fs::path& path) {
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(path, error);
    if (error || bytes > kMostRecordBytes) return std::nullopt;
    try {
        return ReadPrintRecord(path);
    } catch (const HostError&) {
        return std::nullopt;
    }
}

bool Lists(const PrintRecord::Page& page, const std::string& file) {
    return std::find(page.Files.begin(), page.Files.end(), file) != page.Files.end();
}

/// A page's other files (headers, tickets, previews) are told from its channels by their
/// extension: a channel is whole, or shares its extension with one that is.
bool IsChannel(const fs::path& folder, const PrintRecord::Page& page, const PrintedShape& shape,
               const std::string& file) {
    if (IsTiffName(file)) return true;
    const fs::path extension = fs::path(file).extension();
    const int64_t lineBytes = shape.PaddedWidth() / 8 * shape.Bits;
    return std::any_of(page.Files.begin(), page.Files.end(), [&](const std::string& other) {
        std::error_code error;
        return fs::path(other).extension() == extension &&
               fs::file_size(folder / other, error) ==
                   static_cast<std::uintmax_t>(lineBytes) * static_cast<std::uintmax_t>(page.Lines);
    });
}

}  // namespace

bool PrintedShape::IsPossible() const {
    return WidthPixels > 0 && WidthPixels <= INT32_MAX &&
           (Bits == 1 || Bits == 2 || Bits == 4 || Bits == 8);
}

const std::vector<PrintRecord>& PrintedShapes::RecordsIn(const fs::path& folder) {
    const auto known = records_.find(folder);
    if (known != records_.end()) return known->second;
    std::vector<PrintRecord>& records = records_[folder];
    for (const fs::path& path : FindPrintRecords(folder))
        if (std::optional<PrintRecord> record = TryRecord(path))
            records.push_back(std::move(*record));
    return records;
}

std::optional<PrintedShape> PrintedShapes::Find(const fs::path& file) {
    const fs::path path = fs::absolute(file).lexically_normal();
    fs::path folder = path.parent_path();
    for (int i = 0; i < kMostFolders; ++i, folder = folder.parent_path()) {
        const std::string name = path.lexically_relative(folder).string();
        for (const PrintRecord& record : RecordsIn(folder)) {
            for (const PrintRecord::Page& page : record.Pages) {
                const PrintedShape shape = {page.WidthPixels, page.Bits, record.XResolution,
                                            record.YResolution};
                if (Lists(page, name) && shape.IsPossible() && page.Lines > 0 &&
                    IsChannel(folder, page, shape, name))
                    return shape;
            }
        }
    }
    return std::nullopt;
}
