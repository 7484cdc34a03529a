#pragma once

#include <cstdint>
#include <memory>

#include "host/ContainerFailure.h"
#include "host/DirectoryChain.h"
#include "host/SeparationFormat.h"
#include "platform/RandomAccessFile.h"

/// Delivers one separation's rows. Holds a libtiff handle and one block of rows, whatever the
/// height of the page.
class RowSource {
  public:
    virtual ~RowSource() = default;
    /// The format.RowBytes() bytes of row `row`, which the format has, where they were read to:
    /// they stay there until the next call. Null when the data is damaged or missing.
    [[nodiscard]] virtual const uint8_t* Row(uint32_t row) = 0;
    /// Why the last Row was null. The source is of no further use then.
    const ContainerFailure& Failure() const { return failure_; }

  protected:
    ContainerFailure failure_;
};

/// The source that suits the separation; null when its directory cannot be read or has not as many
/// strips as the rows fill, and `failure` says which. The others are borrowed for its life.
std::unique_ptr<RowSource> OpenRowSource(const RandomAccessFile& file,
                                         const ContainerDirectory& directory,
                                         const SeparationFormat& format, ContainerFailure& failure);

/// The kinds that it chooses from. Strips without compression are read in blocks of about 256 KiB,
/// straight from the file.
std::unique_ptr<RowSource> OpenPlainRows(const RandomAccessFile& file,
                                         const ContainerDirectory& directory,
                                         const SeparationFormat& format, ContainerFailure& failure);
/// Compressed strips, decoded one at a time: whole, or row by row where a whole strip would take
/// more memory than a block may, or where only its first rows are good.
std::unique_ptr<RowSource> OpenDecodedRows(const RandomAccessFile& file,
                                           const ContainerDirectory& directory,
                                           const SeparationFormat& format,
                                           ContainerFailure& failure);
