// What is asked for when a run that has not come to its end is to be run once more.

#pragma once

#include "transfer_request.h"

// For the same plan. What is there already and the same is left alone. What is there and differs is
// replaced only where the choices of the first time have said so without a question; there is none
// the second time.
TransferRequest RequestToRunAgain(TransferRequest Request);
