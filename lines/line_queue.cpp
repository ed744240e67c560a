#include "line_queue.h"

void LineQueue::Add(std::string_view Line) {
    Output.Write(std::string(Line) + '\n');
}

void LineQueue::Offer(std::string_view Line) {
    Output.Pump();
    if (Output.IsEmpty()) {
        Add(Line);
    }
}
