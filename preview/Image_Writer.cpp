#include "preview/Image_Writer.h"

#include <algorithm>

Image_Writer::~Image_Writer() = default;

void Image_Writer::SetSize(const AString& name, int width, int height) {
    name_ = name;
    width_ = std::max(width, 0);
    height_ = std::max(height, 0);
}

bool Image_Writer::OpenFile() {
    file_ = name_.empty() ? nullptr : OpenStream(name_.c_str(), "wb");
    return file_ != nullptr;
}

void Image_Writer::Create(const AString& name, int width, int height) {
    SetSize(name, width, height);
    rows_.assign(static_cast<std::size_t>(height_),
                 std::vector<uint32_t>(static_cast<std::size_t>(width_)));
}

void Image_Writer::SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) {
    if (!IsInside(x, y)) return;
    rows_[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] =
        static_cast<uint32_t>(r << 16 | g << 8 | b);
}

int Image_Writer::Save() {
    if (!OpenFile()) return 0;
    for (const std::vector<uint32_t>& row : rows_)
        std::fwrite(row.data(), sizeof(uint32_t), row.size(), file_.get());
    file_.reset();
    return 1;
}
