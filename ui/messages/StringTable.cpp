#include "ui/messages/StringTable.h"

#include <iterator>

#include "platform/afx.h"

namespace {

// The model descriptions number their items after these resources, so numbers and texts stay.
constexpr AfxStringResource kStrings[] = {
    {kWhiteTypeNames, "Spot,Overprint,Underprint,"},
    {kColorNames,
     "Cyan,Magenta,Yellow,Black,Light Cyan,Light Magenta,Light Yellow,Light Black,Spot_1,Spot_2,"
     "Spot_3,Spot_4,White,"},
    {kColorModeNames,
     "CMYK,Grayscale,CMYKLcLmLyLk,CMYK (2 bits),Grayscale (2 bits),CMYKLcLmLyLk (2 bits),"
     "CMYK (4 bits),Grayscale (4 bits),CMYKLcLmLyLk (4 bits),CMYK (8 bits),Grayscale (8 bits),"
     "CMYKLcLmLyLk (8 bits),CMYK1S,CMYK2S,CMYK3S,CMYK4S,CMYKLcLm,CMYKLcLm1S,CMYKLcLm2S,"
     "CMYKLcLmLyLk2S,CMYKWW,CMYKWS,"},
    {kUnsupportedPortMessage,
     "The driver doesn't support the current port, please select another port."},
    {kDiskSpaceMessage, "There is not enough disk space."},
};
constexpr AfxStringTable kTable = {kStrings, std::size(kStrings)};

/// Hands the table to the module state when the module is loaded.
const struct Registration {
    Registration() { AfxSetModuleStrings(kTable); }
} kRegistration;

}  // namespace

int LoadResString(UINT id, char* buffer, int size) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    return LoadStringA(AfxGetResourceHandle(), id, buffer, size);
}
