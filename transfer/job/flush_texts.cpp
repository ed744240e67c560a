#include "flush_texts.h"

std::string WrittenText(FlushReach Reach) {
    const std::string text = "Everything is written";
    switch (Reach) {
    case FlushReach::Server:
        return text + " to the server as far as it says.";
    case FlushReach::System:
        return text + " as far as the system says.";
    case FlushReach::Device:
        break;
    }
    return text + ". It is safe to unplug the disk.";
}

std::string StillWritingText(FlushReach Reach) {
    if (Reach == FlushReach::Server) {
        return "The copied files stay, but not all of them have reached the server yet.";
    }
    return "The copied files stay, but the system is still writing them. Do not unplug the disk "
           "yet.";
}

std::string LeftFlushText(FlushReach Reach) {
    return StillWritingText(Reach) +
           " Until everything is written, umount says that the target is busy.";
}
