#include "Transfer.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <stdexcept>

namespace ZetTool {
namespace {

bool isSceneLinear(const PictureHeader& header) {
    if (header.colourSpace.empty())
        return header.floatSamples;
    std::string tag = header.colourSpace;
    std::transform(tag.begin(), tag.end(), tag.begin(), [](unsigned char c) { return std::tolower(c); });
    return tag == "linear" || tag == "scene_linear" || tag.compare(0, 4, "lin_") == 0;
}

} // namespace

TransferChoice parseTransferChoice(const std::string& name) {
    const std::map<std::string, TransferChoice> choices{{"auto", TransferChoice::Auto},
                                                        {"none", TransferChoice::None},
                                                        {"srgb", TransferChoice::Srgb},
                                                        {"rec709", TransferChoice::Rec709}};
    const auto found = choices.find(name);
    if (found == choices.end())
        throw std::runtime_error("unknown transfer \"" + name + "\": expected auto, none, srgb or rec709");
    return found->second;
}

EmbeddedHost::Transfer chooseTransfer(TransferChoice choice, const PictureHeader& header) {
    using EmbeddedHost::Transfer;
    switch (choice) {
    case TransferChoice::Srgb:
        return Transfer::Srgb;
    case TransferChoice::Rec709:
        return Transfer::Rec709;
    case TransferChoice::None:
        return Transfer::None;
    case TransferChoice::Auto:
        break;
    }
    return isSceneLinear(header) ? Transfer::Srgb : Transfer::None;
}

std::string transferNote(EmbeddedHost::Transfer transfer) {
    using EmbeddedHost::Transfer;
    return transfer == Transfer::None   ? ""
           : transfer == Transfer::Srgb ? ", linear to sRGB"
                                        : ", linear to Rec.709";
}

} // namespace ZetTool
