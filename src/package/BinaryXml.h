#pragma once

#include "package/Bytes.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillnest
{

/// Reads Android's compiled XML. Input is untrusted: malformed bytes give empty or absent results, fields past the end
/// count as zero, and the work done is bounded by the budget that is given, or by one that follows from the input's
/// size. Touches nothing but the bytes. Any thread.
namespace BinaryXml
{
/// The value of one attribute.
struct Attr {
    std::uint8_t type = 0;
    std::uint32_t data = 0;
    /// The raw value as text, if it has one.
    std::optional<std::string> string;

    bool operator==(const Attr &) const = default;
};

/// Known by their names alone, whatever their namespaces.
using Attributes = std::map<std::string, Attr>;

/// One start tag.
struct Element {
    std::string name;
    Attributes attrs;
};

/// An element with what lies in it, in document order. Refers to the elements of its document.
struct Node {
    explicit Node(const Element &element) : name(element.name), attrs(element.attrs) { }

    const std::string &name;
    const Attributes &attrs;
    std::vector<std::unique_ptr<Node>> children;
};

/// A whole file.
struct Document {
    /// The start tags in document order.
    std::vector<Element> elements;
    /// The last element that lies in no other, with all that it holds; elements nested deeper than any real file's are
    /// left out. Null if there is none.
    std::unique_ptr<Node> root;
};

/// Four little-endian bytes; each one outside the array counts as 0.
std::int64_t u32(ByteView bytes, std::int64_t offset);

/// The strings of the pool chunk at `offset`, at most 200000, one for each index whatever happens. A UTF-8 string that
/// doesn't fit is empty; a UTF-16 string is cut to 4096 units. Strings past what the budget allows are left out.
std::vector<std::string> stringPool(ByteView bytes, std::int64_t offset);
std::vector<std::string> stringPool(ByteView bytes, std::int64_t offset, WorkBudget &budget);

/// One string of the pool chunk at `pool`, in full; absent if it or its index doesn't fit.
std::optional<std::string> string(ByteView bytes, std::int64_t pool, std::int64_t index);

/// The file, decoded; as much of it as the budget allows.
Document document(ByteView bytes, WorkBudget &budget);

/// The start tags of a file in document order.
std::vector<Element> elements(ByteView bytes);
std::vector<Element> elements(ByteView bytes, WorkBudget &budget);
} // namespace BinaryXml

} // namespace quillnest
