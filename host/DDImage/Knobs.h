// The calls with which a writer describes its controls.
#pragma once

#include <DDImage/Knob.h>

namespace DD::Image {

/// Goes through a writer's controls for some purpose, such as creating them. It copies the texts that it
/// keeps.
class Knob_Closure {
public:
    virtual ~Knob_Closure();

    /// The knob when this closure creates knobs, else null.
    virtual Knob* enumeration(int* value, const char* const* items, const char* name, const char* label) = 0;
    virtual Knob* text(const char* text) = 0;
    /// Acts on the knob made just before.
    virtual void setFlags(int flags) = 0;
};

using Knob_Callback = Knob_Closure&;

/// A menu bound to `value`, the index into `items`, which end with a null pointer. Without a label the name
/// shows.
inline Knob* Enumeration_knob(Knob_Callback f, int* value, const char* const* items, const char* name,
                              const char* label = nullptr) {
    return f.enumeration(value, items, name, label ? label : name);
}

/// A text that can only be read.
inline Knob* Text_knob(Knob_Callback f, const char* text) { return f.text(text); }

/// Sets flags on the knob made just before.
inline void SetFlags(Knob_Callback f, int flags) { f.setFlags(flags); }

} // namespace DD::Image
