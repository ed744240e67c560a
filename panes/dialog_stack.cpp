#include "dialog_stack.h"

#include <cstddef>

void DialogStack::TakeKey(const KeyPress& Key, TimePoint Now) {
    if (!Layers.empty()) {
        Layers.back().Shown->TakeKey(Key, Now);
        Attend();
    }
}

// What is opened meanwhile comes to lie on top, and is followed from then on.
void DialogStack::Attend() {
    for (std::size_t i = 0; i < Layers.size(); ++i) {
        Layers[i].Follow();
    }
    std::erase_if(Layers, [](const Layer& Each) { return Each.Shown->IsClosed(); });
}

void DialogStack::Draw(Screen& On, TimePoint Now) {
    for (const Layer& layer : Layers) {
        layer.Shown->Draw(On, Now);
    }
}
