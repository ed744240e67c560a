#include "tarvanetransfer.h"
