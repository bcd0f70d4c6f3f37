#pragma once

#include "package/BinaryXml.h"

#include <optional>

namespace quillnest
{

/// Attributes of drawables as numbers.
namespace XmlValues
{
/// Null if the node has none of this name.
const BinaryXml::Attr *attribute(const BinaryXml::Node &node, const char *name);

/// An attribute as a number: floats, integers, dimensions and fractions, whose units are ignored. Absent for all else,
/// so also for a reference, which is not followed.
std::optional<double> floatValue(const BinaryXml::Attr *attr);

/// The same by name, with a value for where there is none.
double number(const BinaryXml::Node &node, const char *name, double missing);

/// The bare data of an attribute, whatever its type; 0 where there is none.
std::uint32_t data(const BinaryXml::Node &node, const char *name);
} // namespace XmlValues

} // namespace quillnest
