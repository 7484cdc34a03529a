#include "preview/BMP_Writer.h"

namespace {

// BITMAPFILEHEADER and BITMAPINFOHEADER (Windows SDK, wingdi.h).
constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::size_t kInfoHeaderBytes = 40;
constexpr int64_t kHeaderBytes = kFileHeaderBytes + kInfoHeaderBytes;
constexpr int kPixelBytes = 3;
constexpr int kBitsPerPixel = 24;

void Put(uint8_t* field, int bytes, int64_t value) {
    for (int i = 0; i < bytes; ++i)
        field[i] = static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i));
}

}  // namespace

void BMP_Writer::Create(const AString& name, int width, int height) {
    SetSize(name, width, height);
    rowCount_ = height_;
    padding_ = (4 - width_ * kPixelBytes % 4) % 4;
    rowSize_ = width_ * kPixelBytes + padding_;
    rows_.assign(static_cast<std::size_t>(rowCount_),
                 std::vector<uint8_t>(static_cast<std::size_t>(rowSize_)));
}

void BMP_Writer::SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) {
    if (!IsInside(x, y)) return;
    uint8_t* const pixel =
        rows_[static_cast<std::size_t>(y)].data() + std::ptrdiff_t{kPixelBytes} * x;
    pixel[0] = b;
    pixel[1] = g;
    pixel[2] = r;
}

int BMP_Writer::Save() {
    if (!OpenFile()) return 0;
    uint8_t fileHeader[kFileHeaderBytes] = {'B', 'M'};
    Put(fileHeader + 2, 4, int64_t{rowCount_} * rowSize_ + kHeaderBytes);
    Put(fileHeader + 10, 4, kHeaderBytes);
    uint8_t infoHeader[kInfoHeaderBytes] = {};
    Put(infoHeader, 4, kInfoHeaderBytes);
    Put(infoHeader + 4, 4, width_);
    Put(infoHeader + 8, 4, height_);
    Put(infoHeader + 12, 2, 1);  // planes
    Put(infoHeader + 14, 2, kBitsPerPixel);
    Write(fileHeader, sizeof fileHeader);
    Write(infoHeader, sizeof infoHeader);
    for (auto row = rows_.rbegin(); row != rows_.rend(); ++row)
        Write(row->data(), row->size());
    CloseFile();
    return 1;
}
