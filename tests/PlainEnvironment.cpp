// What the user's shell says to a driver is not said to the one that is tested.

#include <cstdlib>
#include <initializer_list>

namespace {

const int kForgotten = [] {
    int count = 0;
    for (const char* name : {"QL_BASE_FOLDER", "QL_CODE_PAGE", "QL_DIALOG_SCRIPT", "QL_LOG_FILE",
                             "QL_MESSAGE_FILE", "QL_STRICT", "DISPLAY", "WAYLAND_DISPLAY"})
        count += unsetenv(name);
    return count;
}();

}  // namespace
