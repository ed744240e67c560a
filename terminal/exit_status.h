// The exit statuses of the program. Ends by a signal are 128 + its number.

#pragma once

inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCanceled = 130;
inline constexpr int kExitBySignal = 128;
