#include "sweep/Faults.h"

#include <cerrno>

namespace {

Fault planned;
Injection* record = nullptr;
bool isArmed = false;
bool isInside = false;  // what a strike itself calls and allocates does not count

int ErrorOf(Call call, int32_t position) {
    switch (call) {
        case Call::kOpen:
            return position % 2 == 0 ? EACCES : EMFILE;
        case Call::kRead:
        case Call::kSeek:
        case Call::kClose:
        case Call::kTruncate:
        case Call::kFreeSpace:
            return EIO;
        case Call::kWrite:
        case Call::kReserve:
            return ENOSPC;
        case Call::kShortRead:
        case Call::kShortWrite:
            return 0;
        case Call::kAllocation:
        case Call::kLibraryAllocation:
            return ENOMEM;
        default:
            return EACCES;
    }
}

}  // namespace

void PlanFault(const Fault& fault, Injection& injection) {
    planned = fault;
    injection = {};
    record = &injection;
    CurrentCallSite();  // loads what it needs
}

Armed::Armed() {
    isArmed = true;
}

Armed::~Armed() {
    isArmed = false;
}

bool Strikes(Call call) noexcept {
    if (!isArmed || isInside) return false;
    const int32_t position = ++record->Seen[static_cast<std::size_t>(call)];
    const bool isMeant = planned.Position > 0 && call == planned.What;
    if (!isMeant || position < planned.Position || (position > planned.Position && !planned.Lasts))
        return false;
    const int error = ErrorOf(call, planned.Position);
    if (!record->HasStruck) {
        isInside = true;
        record->HasStruck = true;
        record->Error = error;
        record->Site = CurrentCallSite();
        isInside = false;
    }
    errno = error;
    return true;
}

bool StrikesAllocation(const void* caller, bool isOperatorNew) noexcept {
    if (!isArmed || isInside) return false;
    CodePlace owner = PlaceOf(caller);
    if (isOperatorNew && owner.IsRuntime()) {
        // A string or a list that grows inside the C++ run time grows for its caller.
        isInside = true;
        owner = CurrentCallSite().Frames[0];
        isInside = false;
    }
    if (owner.Library[0] == '\0') return false;  // the host's own, between two calls
    const bool hadStruck = record->HasStruck;
    const bool strikes = Strikes(owner.IsOurs() ? Call::kAllocation : Call::kLibraryAllocation);
    if (strikes && !hadStruck) record->Owner = owner;
    return strikes;
}
