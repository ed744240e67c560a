#include "place_text.h"

#include "screen_text.h"
#include "tarvanepane.h"

std::string PlaceText(const std::filesystem::path& Place) {
    const std::string path = Place.string();
    const std::string device = TarvaneCddaDeviceFromPath(path);
    return CleanForScreen(device.empty() ? path : "Audio CD in " + device);
}
