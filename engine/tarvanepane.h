// How the file manager around the engine names the tracks of an audio CD, which defines these.
//
// Threads: any; the engine calls them on its worker threads. They look at the text only.

#pragma once

#include <string>

// True when Path is meant as an audio-CD path, a malformed one included.
bool TarvaneIsCddaPath(const std::string& Path);

// The drive's device node, or an empty text when Path names no drive.
std::string TarvaneCddaDeviceFromPath(const std::string& Path);

// The track number, or 0 when Path names no track.
int TarvaneCddaTrackFromPath(const std::string& Path);
