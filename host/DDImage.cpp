// The parts of the host's interface that are not inline.
#include <DDImage/Knobs.h>
#include <DDImage/Op.h>
#include <DDImage/Write.h>
#include <DDImage/Writer.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace DD::Image {

namespace {

std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::vector<const Writer::Description*>& registry() {
    static std::vector<const Writer::Description*> descriptions;
    return descriptions;
}

} // namespace

// The destructors stand here so that each class has one vtable, in this library, for the host and all
// plug-ins.
Op::~Op() = default;
Iop::~Iop() = default;
Write::~Write() = default;
Knob_Closure::~Knob_Closure() = default;

void Op::critical(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    reports.errors.push_back(formatted(format, arguments));
    va_end(arguments);
}

void Op::error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    reports.errors.push_back(formatted(format, arguments));
    va_end(arguments);
}

void Op::warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    reports.warnings.push_back(formatted(format, arguments));
    va_end(arguments);
}

Writer::Writer(Write* node) : iop(node) {}
void Writer::knobs(Knob_Callback) {}
const char* Writer::help() { return ""; }
Writer::~Writer() = default;
bool Writer::movie() const { return false; }
void Writer::finish() {}

ChannelSet Writer::channel_mask(int n) const {
    ChannelSet channels;
    for (int i = 0; i < n; ++i)
        channels += channel(i);
    return channels;
}

Writer::Description::Description(const char* typeNames, const char* shownLabel, Constructor make,
                                 const char* stamp)
    : names(typeNames), label(shownLabel), constructor(make), buildStamp(stamp) {
    add();
}

Writer::Description::~Description() {
    auto& descriptions = registry();
    descriptions.erase(std::remove(descriptions.begin(), descriptions.end(), this), descriptions.end());
}

void Writer::Description::add() { registry().push_back(this); }

const std::vector<const Writer::Description*>& Writer::Description::all() { return registry(); }

std::vector<std::string> Writer::Description::fileTypes() const {
    std::vector<std::string> types;
    for (const char* name = names; *name; name += std::strlen(name) + 1)
        types.emplace_back(name);
    return types;
}

const Writer::Description* Writer::Description::find(const char* fileType) {
    for (const Description* description : registry()) {
        const auto types = description->fileTypes();
        if (std::find(types.begin(), types.end(), fileType) != types.end())
            return description;
    }
    return nullptr;
}

} // namespace DD::Image
