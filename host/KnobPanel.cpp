#include <host/KnobPanel.h>

#include <algorithm>
#include <stdexcept>

namespace EmbeddedHost {

DD::Image::Knob* KnobPanel::enumeration(int* value, const char* const* items, const char* name,
                                        const char* label) {
    PanelKnob& knob = knobs.emplace_back();
    knob.value = value;
    knob.name = name;
    knob.text = label;
    for (; *items; ++items)
        knob.items.emplace_back(*items);
    return &knob;
}

DD::Image::Knob* KnobPanel::text(const char* text) {
    PanelKnob& knob = knobs.emplace_back();
    knob.text = text;
    return &knob;
}

void KnobPanel::setFlags(int flags) { knobs.back().flags |= flags; }

const KnobPanel::PanelKnob& KnobPanel::menu(const std::string& name) const {
    const auto found = std::find_if(knobs.begin(), knobs.end(),
                                    [&](const PanelKnob& knob) { return knob.value && knob.name == name; });
    if (found == knobs.end())
        throw std::runtime_error("The writer has no menu \"" + name + "\"");
    return *found;
}

std::vector<std::string> KnobPanel::texts() const {
    std::vector<std::string> texts;
    for (const PanelKnob& knob : knobs)
        if (!knob.value)
            texts.push_back(knob.text);
    return texts;
}

} // namespace EmbeddedHost
