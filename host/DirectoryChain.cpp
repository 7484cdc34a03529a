#include "host/DirectoryChain.h"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <unordered_set>

namespace {

// Tags, from the TIFF 6.0 format.
constexpr uint64_t kImageWidth = 256;
constexpr uint64_t kImageLength = 257;
constexpr uint64_t kStripOffsets = 273;
constexpr uint64_t kStripByteCounts = 279;
constexpr uint64_t kPageNumber = 297;

constexpr uint64_t kShortType = 3;

/// Bytes of one value of each field type, from 0; types beyond are unknown.
constexpr uint64_t kValueBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

/// Where things stand in a file: the classic form or the one with 64-bit offsets.
struct Layout {
    bool isBigEndian;
    std::size_t offsetBytes;  ///< of a link, and of the value or value offset in an entry
    std::size_t countBytes;   ///< of the entry count before a directory's entries
    std::size_t entryBytes;
    uint64_t headerBytes;

    uint64_t Number(const uint8_t* bytes, std::size_t size) const {
        uint64_t number = 0;
        for (std::size_t i = 0; i < size; ++i) {
            number = number << 8 | bytes[isBigEndian ? i : size - 1 - i];
        }
        return number;
    }
};

constexpr Layout kClassic = {false, 4, 2, 12, 8};
constexpr Layout kBig = {false, 8, 8, 20, 16};

class ChainReader {
  public:
    explicit ChainReader(const RandomAccessFile& file) : file_(file) {}

    DirectoryChain Walk() {
        DirectoryChain chain;
        uint64_t offset = 0;
        std::unordered_set<uint64_t> met;
        if (!ReadHeader(offset)) NoteFailure("the file is no TIFF");
        while (offset != 0) {
            ContainerDirectory directory;
            directory.offset = offset;
            uint64_t next = 0;
            const bool isNew = met.insert(offset).second;
            if (!isNew) NoteFailure("a directory link leads back");
            if (!isNew || !ReadDirectory(directory, next)) {
                if (!chain.directories.empty()) chain.directories.back().hasDamagedLink = true;
                break;
            }
            chain.directories.push_back(directory);
            offset = next;
        }
        chain.failure = failure_;
        return chain;
    }

  private:
    /// A read that failed at the system has been noted before.
    void NoteFailure(std::string_view what) {
        if (failure_.systemError == 0) failure_ = ContainerFailure(what);
    }

    bool Read(uint64_t offset, void* bytes, std::size_t count) {
        int error = 0;
        const bool isWhole = file_.ReadAt(offset, bytes, count, &error) == count;
        if (error != 0) failure_ = ContainerFailure("the file cannot be read", error);
        return isWhole;
    }

    bool ReadHeader(uint64_t& firstOffset) {
        uint8_t header[16] = {};
        if (!Read(0, header, kClassic.headerBytes)) return false;
        const bool bigEndian = header[0] == 'M';
        if (header[1] != header[0] || (header[0] != 'I' && !bigEndian)) return false;
        layout_ = kClassic;
        layout_.isBigEndian = bigEndian;
        const uint64_t version = layout_.Number(header + 2, 2);
        if (version == 42) {
            firstOffset = layout_.Number(header + 4, 4);
            return true;
        }
        layout_ = kBig;
        layout_.isBigEndian = bigEndian;
        if (version != 43 || !Read(0, header, kBig.headerBytes)) return false;
        if (layout_.Number(header + 4, 2) != 8 || layout_.Number(header + 6, 2) != 0) return false;
        firstOffset = layout_.Number(header + 8, 8);
        return true;
    }

    /// Reads a directory and the link behind its entries; false when none can stand there.
    bool ReadDirectory(ContainerDirectory& directory, uint64_t& next) {
        const bool isInside =
            directory.offset >= layout_.headerBytes && directory.offset < file_.Size();
        if (isInside && ReadEntries(directory, next) && TakeEntries(directory)) return true;
        NoteFailure(isInside ? "a directory link leads to no directory"
                             : "a directory link leads outside the file");
        return false;
    }

    bool ReadEntries(const ContainerDirectory& directory, uint64_t& next) {
        uint8_t countBytes[8] = {};
        if (!Read(directory.offset, countBytes, layout_.countBytes)) return false;
        const uint64_t count = layout_.Number(countBytes, layout_.countBytes);
        const uint64_t start = directory.offset + layout_.countBytes;
        if (count == 0 || count > (file_.Size() - start) / layout_.entryBytes) return false;
        const uint64_t bytes = count * layout_.entryBytes + layout_.offsetBytes;
        // Directories stand beside each other. Ones that overlap would let a small file make
        // this walk as long as its square.
        directoryBytes_ += layout_.countBytes + bytes;
        if (bytes > file_.Size() - start || directoryBytes_ > file_.Size()) return false;
        entries_.resize(static_cast<std::size_t>(bytes));
        if (!Read(start, entries_.data(), entries_.size())) return false;
        next = layout_.Number(entries_.data() + bytes - layout_.offsetBytes, layout_.offsetBytes);
        return true;
    }

    /// False when the entries are not those of an image, nor of a page.
    bool TakeEntries(ContainerDirectory& directory) const {
        bool hasWidth = false;
        bool hasPageNumber = false;
        const uint8_t* const end = entries_.data() + entries_.size() - layout_.offsetBytes;
        for (const uint8_t* entry = entries_.data(); entry < end; entry += layout_.entryBytes) {
            const uint64_t tag = layout_.Number(entry, 2);
            const uint64_t type = layout_.Number(entry + 2, 2);
            const uint64_t count = layout_.Number(entry + 4, layout_.offsetBytes);
            const uint8_t* const value = entry + 4 + layout_.offsetBytes;
            if (tag == kImageWidth) hasWidth = true;
            if (tag == kStripOffsets) directory.stripOffsetCount = count;
            if (tag == kStripByteCounts) directory.stripSizeCount = count;
            if (!IsInFile(type, count, value))
                directory.damage = "values of a directory stand outside the file";
            if ((tag == kImageWidth || tag == kImageLength) && IsZero(value))
                directory.damage = "a separation has a size of 0";
            for (std::size_t i = 0; i < std::size(kContainerTags); ++i)
                if (tag == kContainerTags[i].number) directory.tags.set(i);
            if (tag != kPageNumber) continue;
            hasPageNumber = true;
            if (type != kShortType || count != 2) continue;
            directory.pageNumber = static_cast<uint16_t>(layout_.Number(value, 2));
            directory.pageCount = static_cast<uint16_t>(layout_.Number(value + 2, 2));
        }
        if (hasPageNumber && !directory.pageNumber)
            directory.damage = "the page number of a directory cannot be read";
        return hasWidth || hasPageNumber;
    }

    /// Whether an entry's value, which stands in the entry, is 0.
    bool IsZero(const uint8_t* value) const {
        return layout_.Number(value, layout_.offsetBytes) == 0;
    }

    bool IsInFile(uint64_t type, uint64_t count, const uint8_t* value) const {
        const uint64_t size = type < std::size(kValueBytes) ? kValueBytes[type] : 0;
        if (size == 0) return true;  // passed over by libtiff and everybody else
        if (count > file_.Size() / size) return false;
        if (count * size <= layout_.offsetBytes) return true;
        const uint64_t offset = layout_.Number(value, layout_.offsetBytes);
        return offset <= file_.Size() && count * size <= file_.Size() - offset;
    }

    const RandomAccessFile& file_;
    ContainerFailure failure_;
    Layout layout_ = kClassic;
    std::vector<uint8_t> entries_;  // and the link behind them
    uint64_t directoryBytes_ = 0;   // of all directories so far
};

}  // namespace

DirectoryChain ReadDirectoryChain(const RandomAccessFile& file) {
    return ChainReader(file).Walk();
}
