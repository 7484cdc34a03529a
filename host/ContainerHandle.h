#pragma once

#include <vector>

#include "host/TiffHandle.h"
#include "platform/RandomAccessFile.h"

/// A libtiff handle of its own over a container that several share.
class ContainerHandle {
  public:
    /// Reads the directory at `offset`; Tiff() is null when libtiff cannot. `file` is borrowed.
    ContainerHandle(const RandomAccessFile& file, uint64_t offset);

    TIFF* Tiff() const { return tiff_.get(); }
    TiffClient& Client() { return client_; }

  private:
    /// libtiff's view of the container. Short reads are served from a window, so that a file of
    /// many small strips costs few system calls.
    class Reader final : public TiffClient {
      public:
        explicit Reader(const RandomAccessFile& file) : file_(file) {}
        tmsize_t Read(void* data, tmsize_t count) override;
        tmsize_t Write(void* data, tmsize_t count) override;
        toff_t Seek(toff_t offset, int origin) override;
        toff_t Size() override { return file_.Size(); }

      private:
        std::size_t FromWindow(void* data, std::size_t count);

        const RandomAccessFile& file_;
        toff_t position_ = 0;
        toff_t windowOffset_ = 0;
        std::size_t windowCount_ = 0;
        std::vector<char> window_;
    };

    Reader client_;
    TiffHandle tiff_;  // after client_, which it uses until it is closed
};
