#include "host/PageImage.h"

#include <cstring>
#include <utility>

#include "host/ContainerHandle.h"

std::unique_ptr<RowSource> OpenRowSource(const RandomAccessFile& file,
                                         const ContainerDirectory& directory,
                                         const SeparationFormat& format,
                                         ContainerFailure& failure) {
    // With fewer strips than its rows fill, the height or the strips' is wrong, and a row that can
    // be read need not be the one that was asked for.
    const uint64_t strips = format.StripCount();
    if (directory.stripOffsetCount < strips || directory.stripSizeCount < strips) {
        failure = ContainerFailure("a separation has fewer strips than its rows fill");
        return nullptr;
    }
    return format.compression == COMPRESSION_NONE
               ? OpenPlainRows(file, directory, format, failure)
               : OpenDecodedRows(file, directory, format, failure);
}

PageImage::Separation::Separation(const ContainerDirectory& of, SeparationFormat read)
    : directory(of),
      format(std::move(read)),
      colorant(format.displayName, format.internalName, format.depth) {}

std::unique_ptr<PageImage> PageImage::Open(const RandomAccessFile& file,
                                           std::span<const ContainerDirectory> directories,
                                           ContainerFailure& failure) {
    std::unique_ptr<PageImage> image(new PageImage(file));
    for (const ContainerDirectory& directory : directories) {
        if (image->Add(directory)) continue;
        failure = image->Failure();
        return nullptr;
    }
    return image;
}

bool PageImage::Add(const ContainerDirectory& directory) {
    if (directory.damage != nullptr) {
        failure_ = ContainerFailure(directory.damage);
        return false;
    }
    const ContainerHandle handle(file_, directory);
    failure_ = handle.Failure();
    if (handle.Tiff() == nullptr) return false;
    std::optional<SeparationFormat> format =
        ReadSeparationFormat(handle.Tiff(), file_.Size(), failure_);
    if (!format) return false;
    if (!separations_.empty() && (format->widthPixels != Width() || format->rows != Rows())) {
        failure_ = ContainerFailure("the page's separations differ in size");
        return false;
    }
    separations_.push_back(std::make_unique<Separation>(directory, std::move(*format)));
    return true;
}

void PageImage::GetSeparations(AObList<AColorant>& separations) {
    for (const auto& separation : separations_)
        separations.push_back(&separation->colorant);
}

int32_t PageImage::ReadRow(uint32_t separation, int32_t row, int32_t count, uint8_t* buffer,
                           int32_t /*reserved*/) {
    const uint8_t* const from = count == 1 && buffer != nullptr ? Row(separation, row) : nullptr;
    if (from == nullptr) return 0;
    std::memcpy(buffer, from,
                static_cast<std::size_t>(separations_[separation]->format.RowBytes()));
    return 1;
}

const uint8_t* PageImage::Row(uint32_t separation, int32_t row) {
    if (separation >= separations_.size() || row < 0 || row >= Rows()) {
        failure_ = ContainerFailure("the page has no such row");
        return nullptr;
    }
    Separation& from = *separations_[separation];
    if (finished_ != nullptr && finished_ != &from) finished_->rows.reset();
    finished_ = nullptr;
    if (from.rows == nullptr)
        from.rows = OpenRowSource(file_, from.directory, from.format, failure_);
    if (from.rows == nullptr) return nullptr;
    const uint8_t* const bytes = from.rows->Row(static_cast<uint32_t>(row));
    if (bytes == nullptr) {
        failure_ = from.rows->Failure();
        from.rows.reset();  // who asks again gets a new one
    } else if (row == Rows() - 1) {
        finished_ = &from;
    }
    return bytes;
}
