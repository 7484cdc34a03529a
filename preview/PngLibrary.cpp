#include "preview/PngLibrary.h"

#include <string>

#include "platform/PathRules.h"
#include "platform/Program.h"
#include "platform/afx.h"
#include "ui/messages/ShowMessage.h"

PngLibrary::~PngLibrary() {
    if (library_ != nullptr) AfxFreeLibrary(library_);
}

template <class Function>
bool PngLibrary::Bind(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(GetProcAddress(library_, name));
    if (function != nullptr) return true;
    ShowMessage((std::string("Failed to load ") + name).c_str());
    return false;
}

bool PngLibrary::Open() {
    const std::string path = ModuleFolder() + kPathSeparator + "libpng3" + kLibrarySuffix;
    library_ = AfxLoadLibrary(path.c_str());
    if (library_ == nullptr) {
        ShowMessage("Cannot open libpng3.dll");
        return false;
    }
    // Every one is looked for, so that each that is missing has its message.
    bool isComplete = Bind(CreateWriteStruct, "png_create_write_struct");
    isComplete &= Bind(CreateInfoStruct, "png_create_info_struct");
    isComplete &= Bind(DestroyWriteStruct, "png_destroy_write_struct");
    isComplete &= Bind(InitIo, "png_init_io");
    isComplete &= Bind(SetWriteStatusFn, "png_set_write_status_fn");
    isComplete &= Bind(SetIhdr, "png_set_IHDR");
    isComplete &= Bind(WriteRow, "png_write_row");
    isComplete &= Bind(WriteEnd, "png_write_end");
    isComplete &= Bind(WriteInfo, "png_write_info");
    return isComplete;
}
