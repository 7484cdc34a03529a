#include "platform/Volume.h"

#include <sys/stat.h>

bool IsSameVolume(const std::string& left, const std::string& right) {
    struct stat one = {};
    struct stat other = {};
    return stat(left.c_str(), &one) == 0 && stat(right.c_str(), &other) == 0 &&
           one.st_dev == other.st_dev;
}
