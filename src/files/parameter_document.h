// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace quorvel::internal {

// Which texts may be given to OpenCV's parsers of XML, YAML and JSON. Some invalid texts crash or hang version 4.6.
// Every rule here keeps away texts that did so.

/// Says whether a text could use up the stack. The parsers call themselves once for each level and need some 250 bytes
/// for it. Every level has a bracket, a tag or, in YAML, at least one more column of indentation. With at most 1000 of
/// each the parsers stay below half a megabyte. Parameter files have five levels.
/// \return whether the text has more than 1000 brackets and tags, or a line of more than 1000 characters
bool isTooDeep(const std::string& text);

/// Says why a text must not be given to a parser. In XML a zero byte, or an end of the text within a tag, makes the
/// parser use a null pointer. In YAML everything but "name: value" lines, and lines indented below them, may make it
/// run without end.
/// \return the reason in words; empty for a text that may be parsed, which may still turn out to be invalid
std::string documentProblem(const std::string& text);

}  // namespace quorvel::internal
