#pragma once

#include <memory>
#include <span>
#include <vector>

#include "host/DirectoryChain.h"
#include "host/RowSource.h"
#include "host/SeparationFormat.h"
#include "host/ZEJob.h"
#include "platform/RandomAccessFile.h"

/// A page of a container. Each separation has a source of its own, opened with the first row that
/// is read and closed with the last, so that rows of all separations in turn cost what rows of one
/// after the other do.
class PageImage final : public AImage {
  public:
    /// The page of these directories, one or more; null when any cannot be read, is no separation,
    /// or differs from the others in size, and `failure` says which. The others are borrowed for
    /// the image's life.
    static std::unique_ptr<PageImage> Open(const RandomAccessFile& file,
                                           std::span<const ContainerDirectory> directories,
                                           ContainerFailure& failure);

    void GetSeparations(AObList<AColorant>& separations) override;
    int32_t Width() const override { return separations_.front()->format.widthPixels; }
    int32_t Rows() const override { return separations_.front()->format.rows; }
    int32_t ReadRow(uint32_t separation, int32_t row, int32_t count, uint8_t* buffer,
                    int32_t reserved) override;
    const uint8_t* Row(uint32_t separation, int32_t row) override;
    const ContainerFailure& Failure() const override { return failure_; }

  private:
    struct Separation {
        Separation(const ContainerDirectory& of, SeparationFormat read);

        const ContainerDirectory& directory;
        SeparationFormat format;
        AColorant colorant;
        std::unique_ptr<RowSource> rows;  // while rows are being read
    };

    explicit PageImage(const RandomAccessFile& file) : file_(file) {}
    bool Add(const ContainerDirectory& directory);

    const RandomAccessFile& file_;
    std::vector<std::unique_ptr<Separation>> separations_;  // at least one
    ContainerFailure failure_;
    Separation* finished_ = nullptr;  // its last row was read, and may still be looked at
};
