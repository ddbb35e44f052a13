// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace quorvel::internal {

// Which texts may be given to OpenCV's parsers of XML, YAML and JSON. Version 4.6 ends or hangs the process on some
// that are no documents; every rule here stands for texts that did.

/// Says whether a text could use up the stack: the parsers call themselves once a level and take some 250 bytes for
/// each. A level takes a bracket, a tag or, in YAML, one column of a line more than the level around it: 1000 of each
/// keep the parsers below half a megabyte. Parameter files have five levels.
/// \return whether the text has more than 1000 brackets and tags, or a line of more than 1000 characters
bool isTooDeep(const std::string& text);

/// Says what a parser must not be given: a zero byte or the end of the text within an XML tag, where it follows a null
/// pointer; in YAML anything but "name: value" and what is indented below it, where it may never come to an end.
/// \return the reason in words, empty for a text that may be parsed (and may still be no document)
std::string documentProblem(const std::string& text);

}  // namespace quorvel::internal
