// One control of a node's panel.
#pragma once

namespace DD::Image {

class Knob {
public:
    /// The texts of the menu, not only its index, are stored in scripts.
    static constexpr int SAVE_MENU = 0x2000000;

    int flags = 0;
};

} // namespace DD::Image
