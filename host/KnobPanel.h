// The panel of a node: the controls that its writer describes, in order.
#pragma once

#include <DDImage/Knobs.h>

#include <deque>
#include <string>
#include <vector>

namespace EmbeddedHost {

/// Creates the knobs that a writer describes and keeps them.
class KnobPanel : public DD::Image::Knob_Closure {
public:
    /// A menu when it has a value, else a text.
    struct PanelKnob : DD::Image::Knob {
        int* value = nullptr;
        std::string name;
        std::string text;
        std::vector<std::string> items;
    };

    DD::Image::Knob* enumeration(int* value, const char* const* items, const char* name,
                                 const char* label) override;
    DD::Image::Knob* text(const char* text) override;
    void setFlags(int flags) override;

    /// Throws std::runtime_error when there is no menu of this name.
    const PanelKnob& menu(const std::string& name) const;
    std::vector<std::string> texts() const;

private:
    std::deque<PanelKnob> knobs; // a deque, because writers keep pointers to their knobs
};

} // namespace EmbeddedHost
