#include "host/Gzip.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

class Inflater {
  public:
    Inflater() {
        // 16 more than the window's bits asks zlib for gzip members only (zlib.h, inflateInit2).
        open_ = inflateInit2(&stream_, MAX_WBITS + 16) == Z_OK;
    }
    ~Inflater() {
        if (open_) inflateEnd(&stream_);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    bool IsOpen() const { return open_; }

    /// Inflates one member from the front of `input`, which it shortens, onto `output`.
    bool InflateMember(std::string_view& input, std::string& output, std::uint64_t mostBytes) {
        inflateReset(&stream_);
        int result = Z_OK;
        while (result == Z_OK) {
            const std::size_t given =
                std::min<std::size_t>(input.size(), std::numeric_limits<uInt>::max());
            stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
            stream_.avail_in = static_cast<uInt>(given);
            stream_.next_out = reinterpret_cast<Bytef*>(block_.data());
            stream_.avail_out = static_cast<uInt>(block_.size());
            result = inflate(&stream_, Z_NO_FLUSH);  // Z_BUF_ERROR when the input has ended
            input.remove_prefix(given - stream_.avail_in);
            const std::size_t inflated = block_.size() - stream_.avail_out;
            if (inflated > mostBytes - output.size()) return false;
            output.append(block_.data(), inflated);
        }
        return result == Z_STREAM_END;
    }

  private:
    z_stream stream_ = {};
    bool open_ = false;
    std::vector<char> block_ = std::vector<char>(std::size_t{64} * 1024);
};

}  // namespace

bool IsGzip(std::string_view bytes) {
    return bytes.substr(0, 2) == "\x1F\x8B";
}

std::optional<std::string> InflateGzip(std::string_view bytes, std::uint64_t mostBytes) {
    Inflater inflater;
    std::string output;
    do {
        if (!inflater.IsOpen() || !inflater.InflateMember(bytes, output, mostBytes)) {
            return std::nullopt;
        }
    } while (!bytes.empty());
    return output;
}
