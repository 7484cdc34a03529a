#pragma once

#include <string_view>
#include <vector>

#include "host/ContainerFailure.h"
#include "host/DirectoryChain.h"
#include "host/TiffHandle.h"
#include "platform/RandomAccessFile.h"

/// A libtiff handle of its own over a container that several share.
class ContainerHandle {
  public:
    /// Reads `directory`. Tiff() is null, and Failure() says why, when it cannot be read, or when
    /// libtiff does not deliver a tag that it has. `file` is borrowed.
    ContainerHandle(const RandomAccessFile& file, const ContainerDirectory& directory);

    TIFF* Tiff() const { return tiff_.get(); }
    const ContainerFailure& Failure() const { return failure_; }

    /// Before calls of libtiff's about which HasFailed and CallFailure are to tell. A handle of
    /// which a call has failed is of no further use: libtiff takes the place of a strip that it
    /// could not read for the file's first byte.
    void StartCalls();
    /// Whether a read failed at the system or libtiff had anything to say, were it a warning.
    bool HasFailed() const { return client_.ReadError() != 0 || client_.HasComplained(); }
    /// Why a call failed; `otherwise` when the system did not say.
    ContainerFailure CallFailure(std::string_view otherwise) const;

  private:
    /// libtiff's view of the container. Short reads are served from a window, so that a file of
    /// many small strips costs few system calls.
    class Reader final : public TiffClient {
      public:
        explicit Reader(const RandomAccessFile& file);
        tmsize_t Read(void* data, tmsize_t count) noexcept override;
        tmsize_t Write(void* data, tmsize_t count) noexcept override;
        toff_t Seek(toff_t offset, int origin) noexcept override;
        toff_t Size() noexcept override { return file_.Size(); }

        /// The system's number for the last read that failed; 0 for none.
        int ReadError() const { return readError_; }
        void ForgetReadError() { readError_ = 0; }

      private:
        std::size_t ReadFile(uint64_t offset, void* data, std::size_t count);
        std::size_t FromWindow(void* data, std::size_t count);

        const RandomAccessFile& file_;
        toff_t position_ = 0;
        toff_t windowOffset_ = 0;
        std::size_t windowCount_ = 0;
        std::vector<char> window_;
        int readError_ = 0;
    };

    bool HasEveryTag(const ContainerDirectory& directory) const;

    ContainerFailure failure_;
    Reader client_;
    TiffHandle tiff_;  // after client_, which it uses until it is closed
};
