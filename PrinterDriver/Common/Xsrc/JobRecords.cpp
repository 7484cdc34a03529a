#include "PrinterDriver/Common/Xsrc/JobRecords.h"

JobTrackRecord::~JobTrackRecord() {
    DeleteColorants();
}

void JobTrackRecord::DeleteColorants() {
    while (!Colorants.empty())
        Colorants.pop_back();
}
