#include "platform/AppendToFile.h"

#include <fcntl.h>

#include "platform/posix/Descriptor.h"

bool AppendToFile(const char* path, std::string_view bytes) noexcept {
    ScopedDescriptor file(open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0666));
    return file.Get() >= 0 && WriteAll(file.Get(), bytes) && file.Close();
}

void WriteToStandardError(std::string_view bytes) noexcept {
    WriteAll(STDERR_FILENO, bytes);
}
