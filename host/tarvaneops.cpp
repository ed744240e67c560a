#include "tarvaneops.h"
