#include "host/FSGanerateID.h"

#include <fmt/format.h>

#include <random>

AString FSGanerateID() {
    std::random_device device;
    return fmt::format("{:08X}{:08X}{:08X}{:08X}", device(), device(), device(), device());
}
