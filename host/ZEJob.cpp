#include "host/ZEJob.h"

#include <span>

#include "host/DirectoryChain.h"
#include "host/PageImage.h"
#include "host/PageTable.h"
#include "platform/RandomAccessFile.h"
#include "platform/SystemError.h"

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
    failure_ = {};
    PageCount = 0;
    auto loaded = std::make_unique<Container>();
    if (!container.isValid()) return Fail(ContainerFailure("the path leads outside its folder"));
    if (!loaded->file.Open(container.fullPath().c_str())) {
        const int error = LastSystemError();
        return Fail(error != 0 ? ContainerFailure("the file cannot be opened", error)
                               : ContainerFailure("it is no plain file"));
    }
    const DirectoryChain chain = ReadDirectoryChain(loaded->file);
    loaded->pages = PageTable(chain);
    PageCount = loaded->pages.PageCount();
    container_ = std::move(loaded);
    return PageCount > 0 ? 1 : Fail(chain.failure);
}

int32_t ZEJob::OpenData(int32_t mode) {
    constexpr int32_t kRead = 1;
    if (container_ == nullptr) return 0;  // Load has said why
    if (mode != kRead) return Fail(ContainerFailure("the file is only read"));
    container_->isOpen = true;
    return 1;
}

AImage* ZEJob::GetImage(uint32_t pageIndex) {
    Flush();
    if (container_ == nullptr || !container_->isOpen) {
        if (container_ != nullptr || failure_.text[0] == '\0')
            Fail(ContainerFailure("the container is not open"));
        return nullptr;
    }
    const std::span<const ContainerDirectory> directories =
        container_->pages.Separations(pageIndex, failure_);
    if (!directories.empty())
        container_->image = PageImage::Open(container_->file, directories, failure_);
    return container_->image.get();
}

void ZEJob::Flush() {
    if (container_ != nullptr) container_->image.reset();
}

void ZEJob::Close() {
    container_.reset();
}

int32_t ZEJob::Fail(const ContainerFailure& failure) {
    failure_ = failure;
    return 0;
}
