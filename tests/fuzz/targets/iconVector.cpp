#include "package/IconVector.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/fakes/PackageFiles.h"
#include "package/BinaryXml.h"
#include "package/IconSource.h"
#include "platform/desktop/QtDrawing.h"

using namespace quillnest;

namespace
{
/// Takes every operation and draws nothing: the real canvas costs a thousand times what a mutation does.
class BlankDrawing : public Drawing
{
public:
    std::unique_ptr<Canvas> canvas(int width, int height) override
    {
        return std::make_unique<Blank>(Image{width, height, {}});
    }
    std::optional<Image> decode(std::span<const std::uint8_t> /*bytes*/) override { return Image{1, 1, {0}}; }
    std::optional<std::vector<std::uint8_t>> encodePng(const Image & /*image*/) override { return std::nullopt; }

private:
    class Blank : public Canvas
    {
    public:
        explicit Blank(Image image) : m_image(std::move(image)) { }
        void saveState() override { }
        void restoreState() override { }
        void translate(double /*x*/, double /*y*/) override { }
        void scale(double /*x*/, double /*y*/) override { }
        void rotate(double /*radians*/) override { }
        void setAlpha(double /*alpha*/) override { }
        void setFillColor(const Color & /*color*/) override { }
        void setStrokeColor(const Color & /*color*/) override { }
        void setLineWidth(double /*width*/) override { }
        void setLineCap(LineCap /*cap*/) override { }
        void setLineJoin(LineJoin /*join*/) override { }
        void clip(const Path & /*path*/, FillRule /*rule*/) override { }
        void fill(const Path & /*path*/, FillRule /*rule*/) override { }
        void stroke(const Path & /*path*/) override { }
        void fillRect(const Rect & /*rect*/) override { }
        void fillEllipse(const Rect & /*rect*/) override { }
        void drawImage(const Image & /*image*/, const Rect & /*rect*/) override { }
        void drawLinearGradient(const Gradient & /*gradient*/, Point /*start*/, Point /*end*/) override { }
        void drawRadialGradient(const Gradient & /*gradient*/, Point /*center*/, double /*radius*/) override { }
        Image image() const override { return m_image; }

    private:
        const Image m_image;
    };
};

std::size_t nodes(const BinaryXml::Node &node)
{
    std::size_t count = 1;
    for (const auto &child : node.children)
        count += nodes(*child);
    return count;
}
} // namespace

/// The drawable, the package's table, and the files that either of them names.
QUILLNEST_FUZZ_TARGET(input)
{
    constexpr std::size_t mostFiles = 8;
    const auto budget = input.budget();
    const bool draws = input.oneOf(16);
    const auto drawable = input.part();
    const auto table = input.part();
    std::vector<ByteView> files;
    while (!input.rest().empty() && files.size() < mostFiles)
        files.push_back(input.part());

    fuzz::NoArchives archives;
    fuzz::PackageFiles package(std::move(files));
    QtDrawing real;
    BlankDrawing blank;
    Drawing &drawing = draws ? static_cast<Drawing &>(real) : blank;
    const APKIconExtractor::IconTools tools{archives, drawing, [](const std::string &line) {
                                                fuzz::requireText(line);
                                                fuzz::require(line.find('\n') == std::string::npos);
                                            }};
    IconSource forTree(tools, package, table, budget);
    const auto document = forTree.decode(drawable);
    if (document.root)
        fuzz::require(nodes(*document.root) <= drawable.size());
    IconSource forPicture(tools, package, table, budget);
    const auto picture = IconVector::render(forPicture, drawable, 0);
    constexpr auto side = APKIconExtractor::iconSize;
    if (picture) {
        fuzz::require(picture->width == side && picture->height == side);
        fuzz::require(!draws || picture->pixels.size() == std::size_t{side} * side);
    }
}
