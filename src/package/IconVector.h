#pragma once

#include "package/BinaryXml.h"
#include "platform/Canvas.h"

#include <span>

namespace quillnest
{

class IconSource;

/// Draws Android's XML drawables straight from their compiled form: vectors, insets, plain shapes and colours. What it
/// doesn't know is passed over. One call stands alone; the thread is the source's.
namespace IconVector
{
/// The picture that a compiled XML file draws, 192 by 192 pixels; absent if it draws nothing. `depth` counts the
/// resources that led to this file.
std::optional<Image> render(IconSource &source, const BinaryXml::Document &document, int depth);
std::optional<Image> render(IconSource &source, ByteView bytes, int depth);

/// Draws a vector's elements; true if anything was painted.
bool draw(IconSource &source, Canvas &canvas, std::span<const std::unique_ptr<BinaryXml::Node>> nodes);
} // namespace IconVector

} // namespace quillnest
