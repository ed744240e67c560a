#include "ring_sound.h"
