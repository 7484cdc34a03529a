#include "host/ChannelWriter.h"

namespace {

class RawWriter final : public ChannelWriter {
  public:
    RawWriter(std::FILE* file, const ChannelFormat& format)
        : file_(file), lineBytes_(static_cast<std::size_t>(format.lineBytes)) {}

    bool Write(const void* lines, uint32_t lineCount) override {
        const std::size_t count = lineBytes_ * lineCount;
        return std::fwrite(lines, 1, count, file_) == count;
    }

    bool Complete() override { return true; }

  private:
    std::FILE* file_;
    std::size_t lineBytes_;
};

}  // namespace

std::unique_ptr<ChannelWriter> MakeRawWriter(std::FILE* file, const ChannelFormat& format) {
    return std::make_unique<RawWriter>(file, format);
}
