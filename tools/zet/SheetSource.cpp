#include "SheetSource.h"

#include <pictures/DisplayedPicture.h>

namespace ZetTool {

SheetSource::SheetSource(std::unique_ptr<FrameSource> source, TransferChoice transfer)
    : pictures(std::move(source)), choice(transfer) {
    if (const std::vector<int> frames = pictures->frames(); frames.size() == 1)
        onlyFrame = frames.front();
}

std::shared_ptr<const SheetSource::Frame> SheetSource::frame(int number) {
    const std::lock_guard lock(mutex); // who waits is likely to want the frame that is being loaded
    const int wanted = onlyFrame.value_or(number);
    if (!last || last->number != wanted)
        last = load(wanted);
    return last;
}

std::shared_ptr<const SheetSource::Frame> SheetSource::load(int number) const {
    Picture picture = pictures->read(number);
    const EmbeddedHost::RenderSettings settings{chooseTransfer(choice, picture.header()),
                                                picture.header().premultiplied};
    return std::make_shared<Frame>(Frame{number, pictures->name(number), picture.hasAlpha(),
                                         settings.transfer, displayedPixels(picture, settings)});
}

} // namespace ZetTool
