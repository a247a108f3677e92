// Runs writer plug-ins without the host application: loads them, finds the writer for a file type, sets its
// menus and has it write frames from a picture in memory.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace EmbeddedHost {

/// The channels of a picture, in the order in which the host numbers them.
enum class PictureChannel { Red, Green, Blue, Alpha };

/// A picture as a writer's input sees it: float samples, rows numbered from the bottom (0) to the top.
class PictureSource {
public:
    virtual ~PictureSource() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;
    virtual bool hasAlpha() const = 0;

    /// Writes the samples of columns `x` (inclusive) to `r` (exclusive) of row `y` to `to`. The alpha is
    /// asked for only when `hasAlpha()`. May throw; the frame then fails with the exception's text.
    virtual void readRow(int y, int x, int r, PictureChannel channel, float* to) = 0;
};

/// The transfer function that takes the picture's samples to the samples handed to the writer.
enum class Transfer {
    None,  ///< samples pass untouched
    Srgb,  ///< linear light to IEC 61966-2-1
    Rec709 ///< linear light to ITU-R BT.709
};

/// How one frame is to be rendered.
struct RenderSettings {
    Transfer transfer = Transfer::None;
    /// Colour is multiplied by alpha: the transfer function divides by alpha before and multiplies after.
    bool premultiplied = false;
};

/// What came of one frame.
struct RenderResult {
    std::vector<std::string>
        criticalErrors;                ///< in the order in which the writer reported them; empty: written
    std::vector<double> progress;      ///< the fractions that the writer reported
    std::vector<std::string> warnings; ///< what the writer reported that did not stop it

    bool succeeded() const { return criticalErrors.empty(); }
};

/// Loads a writer plug-in, whose static descriptions then register themselves; it stays loaded to the end of
/// the process. Throws std::runtime_error that names the file and the loader's reason.
void loadPlugin(const std::filesystem::path& plugin);

/// The file types that the loaded plug-ins write ("zet", "z9zt").
std::vector<std::string> registeredFileTypes();

/// One Write node with the writer of a file type. One thread at a time; nodes are independent of one another.
class WriteNode {
public:
    /// Builds the writer registered for `fileType` (without the dot) and creates its knobs. Throws
    /// std::runtime_error that names the type when no loaded plug-in writes it.
    explicit WriteNode(const std::string& fileType);
    ~WriteNode();
    WriteNode(WriteNode&&) noexcept;
    WriteNode& operator=(WriteNode&&) noexcept;

    /// The items of the enumeration knob `name`, in menu order. Throws std::runtime_error for an unknown
    /// knob.
    std::vector<std::string> menu(const std::string& name) const;
    /// Sets the knob's value as a script would, without a range check.
    void setMenu(const std::string& name, int index);
    /// Sets the knob to the item with this label; throws std::runtime_error that names an unknown label.
    void setMenu(const std::string& name, const std::string& label);
    int menuIndex(const std::string& name) const;

    /// The texts of the text knobs, in panel order.
    std::vector<std::string> texts() const;
    /// The writer's help text.
    std::string help() const;

    /// Has the writer write `source` to `file`; an empty path means that the host has no file name. What the
    /// writer reports, and any exception that it lets out, comes back as the result.
    RenderResult render(PictureSource& source, const std::filesystem::path& file,
                        const RenderSettings& settings = {});

private:
    class Node;
    std::unique_ptr<Node> node;
};

} // namespace EmbeddedHost
