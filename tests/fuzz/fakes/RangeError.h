#pragma once

namespace quillnest::fuzz
{

/// Thrown in place of the stop that the manifest reader makes on purpose. Every other end of the process is a finding.
struct RangeError {
};

} // namespace quillnest::fuzz
