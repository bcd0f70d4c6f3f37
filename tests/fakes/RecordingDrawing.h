#pragma once

#include "platform/Canvas.h"

#include <functional>
#include <sstream>
#include <string>

namespace quillnest
{

/// Writes down what is drawn, one line for each operation: "translate 0 192", "fillColor ff0000", "fill evenodd M 0 0
/// …". Pictures are transparent, but each canvas marks its own with its number in the first pixel.
class RecordingDrawing : public Drawing
{
public:
    std::unique_ptr<Canvas> canvas(int width, int height) override
    {
        if (refusesCanvases)
            return nullptr;
        return std::make_unique<Recorder>(*this, width, height);
    }

    std::optional<Image> decode(std::span<const std::uint8_t> bytes) override
    {
        lines.push_back("decode " + std::to_string(bytes.size()));
        if (decodes)
            return decodes(bytes);
        return std::nullopt;
    }

    std::optional<std::vector<std::uint8_t>> encodePng(const Image &image) override
    {
        if (refusesToEncode)
            return std::nullopt;
        return std::vector<std::uint8_t>{
            'P', static_cast<std::uint8_t>(image.width), static_cast<std::uint8_t>(image.height)};
    }

    std::vector<std::string> lines;
    std::function<std::optional<Image>(std::span<const std::uint8_t>)> decodes;
    bool refusesCanvases = false;
    bool refusesToEncode = false;

    /// Everything that was drawn, joined by "; ".
    std::string all() const
    {
        std::string result;
        for (const auto &line : lines)
            result += (result.empty() ? "" : "; ") + line;
        return result;
    }

private:
    template <typename... Values> static std::string text(const char *name, const Values &...values)
    {
        std::ostringstream out;
        out << name;
        ((out << ' ' << values), ...);
        return out.str();
    }

    static std::string colorText(const Color &color)
    {
        const auto part = [](double value) { return static_cast<unsigned>(value * 255 + 0.5); };
        std::ostringstream out;
        out << std::hex
            << ((part(color.alpha) << 24) | (part(color.red) << 16) | (part(color.green) << 8) | part(color.blue));
        return out.str();
    }

    static std::string pathText(const Path &path)
    {
        std::ostringstream out;
        for (const auto verb : path.verbs())
            out << "MLQCZ"[static_cast<int>(verb)];
        for (const auto point : path.points())
            out << ' ' << point.x << ' ' << point.y;
        return out.str();
    }

    static std::string stopsText(const Gradient &gradient)
    {
        std::ostringstream out;
        for (const auto &stop : gradient.stops)
            out << (out.tellp() > 0 ? "," : "") << stop.position << ':' << colorText(stop.color);
        return out.str();
    }

    class Recorder : public Canvas
    {
    public:
        Recorder(RecordingDrawing &log, int width, int height)
            : m_log(log), m_image{width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width) * height)}
        {
            m_image.pixels[0] = ++m_log.m_canvases;
        }

        void saveState() override { write("save"); }
        void restoreState() override { write("restore"); }
        void translate(double x, double y) override { write("translate", x + 0.0, y + 0.0); }
        void scale(double x, double y) override { write("scale", x, y); }
        void rotate(double radians) override { write("rotate", radians); }
        void setAlpha(double alpha) override { write("alpha", alpha); }
        void setFillColor(const Color &color) override { write("fillColor", colorText(color)); }
        void setStrokeColor(const Color &color) override { write("strokeColor", colorText(color)); }
        void setLineWidth(double width) override { write("lineWidth", width); }
        void setLineCap(LineCap cap) override { write("lineCap", static_cast<int>(cap)); }
        void setLineJoin(LineJoin join) override { write("lineJoin", static_cast<int>(join)); }
        void clip(const Path &path, FillRule rule) override { write("clip", ruleText(rule), pathText(path)); }
        void fill(const Path &path, FillRule rule) override { write("fill", ruleText(rule), pathText(path)); }
        void stroke(const Path &path) override { write("stroke", pathText(path)); }
        void fillRect(const Rect &rect) override { write("rect", rect.x, rect.y, rect.width, rect.height); }
        void fillEllipse(const Rect &rect) override { write("ellipse", rect.x, rect.y, rect.width, rect.height); }
        void drawImage(const Image &image, const Rect &rect) override
        {
            write("image", image.pixels.at(0), rect.x, rect.y, rect.width, rect.height);
        }
        void drawLinearGradient(const Gradient &gradient, Point start, Point end) override
        {
            write("linear", stopsText(gradient), start.x, start.y, end.x, end.y);
        }
        void drawRadialGradient(const Gradient &gradient, Point center, double radius) override
        {
            write("radial", stopsText(gradient), center.x, center.y, radius);
        }
        Image image() const override { return m_image; }

    private:
        static const char *ruleText(FillRule rule) { return rule == FillRule::evenOdd ? "evenodd" : "winding"; }
        template <typename... Values> void write(const char *name, const Values &...values)
        {
            m_log.lines.push_back(text(name, values...));
        }

        RecordingDrawing &m_log;
        Image m_image;
    };

    std::uint32_t m_canvases = 0;
};

} // namespace quillnest
