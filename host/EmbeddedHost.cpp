#include <host/EmbeddedHost.h>

#include <host/KnobPanel.h>
#include <host/PictureInput.h>
#include <host/TransferCurves.h>

#include <DDImage/Write.h>
#include <DDImage/Writer.h>

#include <dlfcn.h>

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace EmbeddedHost {

void loadPlugin(const std::filesystem::path& plugin) {
    // An absolute path, because the loader looks for a bare name in the system's folders only. The library
    // stays, because writers and the memory that they share live in it.
    const auto file = std::filesystem::absolute(plugin);
    if (!dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
        throw std::runtime_error("Cannot load the plug-in " + file.string() + ": " + dlerror());
}

std::vector<std::string> registeredFileTypes() {
    std::vector<std::string> types;
    for (const auto* description : DD::Image::Writer::Description::all())
        for (auto& type : description->fileTypes())
            types.push_back(std::move(type));
    return types;
}

/// The node as its writer sees it.
class WriteNode::Node final : public DD::Image::Write {
public:
    explicit Node(const std::string& fileType);
    ~Node() override;

    RenderResult render(PictureSource& source, const std::filesystem::path& file,
                        const RenderSettings& settings);

    DD::Image::Op* input(int n) const override { return n == 0 && frame ? &frame->input : nullptr; }
    const Info& info() const override { return current().input.info(); }
    void request(int x, int y, int r, int t, const DD::Image::ChannelSet& channels, int count) override {
        current().input.request(x, y, r, t, channels, count);
    }

    const char* filename() const override {
        return current().file.empty() ? nullptr : current().file.c_str();
    }
    void inputnget(int y, int x, int r, const DD::Image::ChannelSet& channels, DD::Image::Row& row) override {
        current().input.read(y, x, r, channels, row);
    }
    int depth() const override { return current().input.hasAlpha() ? 4 : 3; }
    bool premult() const override { return current().settings.premultiplied; }
    void to_float(int z, float* to, const float* from, const float* alpha, int W, int delta) const override;

    KnobPanel panel;
    std::unique_ptr<DD::Image::Writer> writer;

private:
    struct Frame {
        PictureInput input;
        std::string file;
        RenderSettings settings;
    };

    /// Throws std::logic_error when the writer asks outside of `execute`, where there is no frame to ask
    /// about.
    Frame& current() const {
        if (!frame)
            throw std::logic_error("The writer asked about a frame while it had none to write");
        return *frame;
    }

    struct Released {
        Frame*& frame;
        ~Released() { frame = nullptr; }
    };

    Frame* frame = nullptr; // set while the writer executes
};

WriteNode::Node::Node(const std::string& fileType) {
    const auto* description = DD::Image::Writer::Description::find(fileType.c_str());
    if (!description)
        throw std::runtime_error("No loaded plug-in writes files of type \"" + fileType + "\"");
    writer.reset(description->constructor(this));
    writer->knobs(panel);
}

WriteNode::Node::~Node() {
    try {
        writer->finish();
    } catch (...) {
        // Nobody is left to be told, and the frames have been judged one by one.
    }
}

RenderResult WriteNode::Node::render(PictureSource& source, const std::filesystem::path& file,
                                     const RenderSettings& settings) {
    std::vector<std::string> escaped;
    try {
        Frame inHand{PictureInput(source), file.string(), settings};
        frame = &inHand;
        const Released afterwards{frame};
        writer->execute();
    } catch (const PictureFailure& failure) {
        escaped.push_back(failure.message);
    } catch (const std::exception& exception) {
        escaped.push_back(exception.what());
    } catch (...) {
        escaped.push_back("The writer failed with an exception of an unknown type");
    }

    auto [errors, warnings, progress] = takeReports();
    errors.insert(errors.end(), escaped.begin(), escaped.end());
    std::vector<double> fractions;
    for (const auto& step : progress)
        fractions.push_back(step.fraction);
    return {std::move(errors), std::move(fractions), std::move(warnings)};
}

void WriteNode::Node::to_float(int z, float* to, const float* from, const float* alpha, int W,
                               int delta) const {
    const bool isColour = z != DD::Image::Chan_Alpha;
    encodeRow(isColour ? current().settings.transfer : Transfer::None, to, from, premult() ? alpha : nullptr,
              W, delta);
}

WriteNode::WriteNode(const std::string& fileType) : node(std::make_unique<Node>(fileType)) {}
WriteNode::~WriteNode() = default;
WriteNode::WriteNode(WriteNode&&) noexcept = default;
WriteNode& WriteNode::operator=(WriteNode&&) noexcept = default;

std::vector<std::string> WriteNode::menu(const std::string& name) const {
    return node->panel.menu(name).items;
}

void WriteNode::setMenu(const std::string& name, int index) { *node->panel.menu(name).value = index; }

void WriteNode::setMenu(const std::string& name, const std::string& label) {
    const auto& items = node->panel.menu(name).items;
    const auto found = std::find(items.begin(), items.end(), label);
    if (found == items.end())
        throw std::runtime_error("The menu \"" + name + "\" has no item \"" + label + "\"");
    setMenu(name, static_cast<int>(found - items.begin()));
}

int WriteNode::menuIndex(const std::string& name) const { return *node->panel.menu(name).value; }

std::vector<std::string> WriteNode::texts() const { return node->panel.texts(); }

std::string WriteNode::help() const { return node->writer->help(); }

RenderResult WriteNode::render(PictureSource& source, const std::filesystem::path& file,
                               const RenderSettings& settings) {
    return node->render(source, file, settings);
}

} // namespace EmbeddedHost
