#include "tarvanepane.h"
