#pragma once

#include <string>
#include <vector>

#include "driverhost/ChoiceOptions.h"
#include "driverhost/DriverInterface.h"
#include "driverhost/InkScreen.h"

/// How the inks of one bit are screened.
enum class OneBitScreens {
    kEither,     ///< clustered dots, dispersed ones for an ink whose screen cannot be made
    kClustered,  ///< by the screening parameters, all of them
    kDispersed
};

/// The screens of a colour mode's inks.
struct JobScreens {
    InkScreens Screens;
    std::vector<std::string> Descriptions;  ///< what each screened ink got, a line each
    std::vector<std::string> Faults;        ///< parameters that could not be used
};

/// Asks a driver that has answered a capability for what the mode's inks need: screening
/// parameters for those of one bit, dither parameters for dispersed dots of 1, 2 or 4 bits. 8 bits
/// keep their amounts. Every colorant has one of these depths. Throws HostError, naming the ink,
/// when its screen cannot be made and nothing may stand in for it, and naming the file, when
/// parameters cannot be read: other ones would not be what was chosen.
JobScreens MakeJobScreens(DriverInterface& driver, const PrintSettings& settings,
                          const ChosenPrint& chosen, OneBitScreens kind);

/// Prints the descriptions.
void PrintScreens(const JobScreens& screens);
