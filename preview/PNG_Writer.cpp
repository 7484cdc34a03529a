#include "preview/PNG_Writer.h"

#include "preview/PngLibrary.h"
#include "ui/messages/ShowMessage.h"

namespace {

constexpr int kPixelBytes = 3;
constexpr int kSpareRowBytes = 1024;
/// The version of the library that the entry points were taken from.
constexpr const char* kVersion = "1.2.34";
constexpr int kBitDepth = 8;
constexpr int kColorTypeRgb = 2;  // png.h: PNG_COLOR_TYPE_RGB

void IgnoreStatus(PngLibrary::Write* /*png*/, uint32_t /*row*/, int /*pass*/) {}

/// The library's two structures, destroyed on every path.
class Structures {
  public:
    explicit Structures(const PngLibrary& library)
        : library_(library),
          write_(library.CreateWriteStruct(kVersion, nullptr, nullptr, nullptr)) {
        if (write_ != nullptr) info_ = library.CreateInfoStruct(write_);
    }
    ~Structures() {
        if (write_ != nullptr) library_.DestroyWriteStruct(&write_, &info_);
    }
    Structures(const Structures&) = delete;
    Structures& operator=(const Structures&) = delete;

    PngLibrary::Write* Write() const { return write_; }
    PngLibrary::Info* Info() const { return info_; }

  private:
    const PngLibrary& library_;
    PngLibrary::Write* write_;
    PngLibrary::Info* info_ = nullptr;
};

/// Whatever the library raises ends the call only.
template <class Call>
bool Succeeds(Call&& call) {
    try {
        call();
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace

void PNG_Writer::Create(const AString& name, int width, int height) {
    SetSize(name, width, height);
    rowCount_ = height_;
    padding_ = (4 - width_ * kPixelBytes % 4) % 4;
    rowSize_ = width_ * kPixelBytes + padding_ + kSpareRowBytes;
    rows_.assign(static_cast<std::size_t>(rowCount_),
                 std::vector<uint8_t>(static_cast<std::size_t>(rowSize_)));
}

void PNG_Writer::SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) {
    if (!IsInside(x, y)) return;
    uint8_t* const pixel =
        rows_[static_cast<std::size_t>(y)].data() + std::ptrdiff_t{kPixelBytes} * x;
    pixel[0] = r;
    pixel[1] = g;
    pixel[2] = b;
}

int PNG_Writer::Save() {
    if (!OpenFile()) return 0;
    const char* message = nullptr;
    const int answer = WritePicture(message);
    CloseFile();
    if (message != nullptr) ShowMessage(message);
    return answer;
}

/// Whether a step of the library's went well; what went wrong is kept.
bool PNG_Writer::IsDone(bool succeeded) {
    if (succeeded) return true;
    if (std::ferror(file_.get()) != 0)
        FailWrite();
    else
        Fail("the PNG library refuses the preview");
    return false;
}

/// What Save answers; `message` is what is to be shown of it.
int PNG_Writer::WritePicture(const char*& message) {
    PngLibrary library;
    Fail("there is no PNG library for the preview");
    if (!library.Open()) return 1;
    const Structures png(library);
    Fail("the PNG library cannot begin the preview");
    if (png.Info() == nullptr) return 0;
    Fail(nullptr);
    const bool started = Succeeds([&] {
        library.InitIo(png.Write(), file_.get());
        library.SetWriteStatusFn(png.Write(), &IgnoreStatus);
        library.SetIhdr(png.Write(), png.Info(), static_cast<uint32_t>(width_),
                        static_cast<uint32_t>(height_), kBitDepth, kColorTypeRgb, 0, 0, 0);
    });
    if (!IsDone(started)) return 0;
    if (!IsDone(Succeeds([&] { library.WriteInfo(png.Write(), png.Info()); }))) {
        message = "Exception caught in png_write_info";
        return 1;
    }
    const bool written = Succeeds([&] {
        for (auto row = rows_.rbegin(); row != rows_.rend(); ++row)
            library.WriteRow(png.Write(), row->data());
    });
    if (!IsDone(written)) message = "Exception caught in png_write_row";
    IsDone(Succeeds([&] { library.WriteEnd(png.Write(), nullptr); }));
    return 1;
}
