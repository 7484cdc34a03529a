#include "host/ZEJob.h"

#include "host/DirectoryChain.h"
#include "host/PageImage.h"
#include "host/PageTable.h"
#include "platform/RandomAccessFile.h"

struct ZEJob::Container {
    RandomAccessFile file;
    PageTable pages;
    bool isOpen = false;
    std::unique_ptr<PageImage> image;  // of the current page; uses the two above
};

ZEJob::ZEJob(int32_t /*reserved*/) {}

ZEJob::~ZEJob() = default;

AFilePath ZEJob::GetFileName(eHardCodePrefix kind, const AFilePath& jobPath) {
    if (!jobPath.isValid()) return jobPath;
    return AFilePath(jobPath.fullPath() + (kind == kPreferredContainer ? ".pages.tif" : ".tif"));
}

int32_t ZEJob::Load(const AFilePath& container) {
    container_.reset();
    PageCount = 0;
    auto loaded = std::make_unique<Container>();
    if (!container.isValid() || !loaded->file.Open(container.fullPath().c_str())) return 0;
    loaded->pages = PageTable(ReadDirectoryChain(loaded->file));
    PageCount = loaded->pages.PageCount();
    container_ = std::move(loaded);
    return PageCount > 0 ? 1 : 0;
}

int32_t ZEJob::OpenData(int32_t mode) {
    constexpr int32_t kRead = 1;
    if (container_ == nullptr || mode != kRead) return 0;
    container_->isOpen = true;
    return 1;
}

AImage* ZEJob::GetImage(uint32_t pageIndex) {
    Flush();
    if (container_ == nullptr || !container_->isOpen) return nullptr;
    container_->image = PageImage::Open(container_->file, container_->pages.Separations(pageIndex));
    return container_->image.get();
}

void ZEJob::Flush() {
    if (container_ != nullptr) container_->image.reset();
}
