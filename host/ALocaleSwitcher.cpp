#include "host/ALocaleSwitcher.h"
