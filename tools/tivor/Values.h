#pragma once

#include "Display.h"

#include <Tivor/DataContainer.h>

#include <functional>

namespace Qor::Tivor::Tool {

/// Prints an object: a text as it is, anything else as lines: one for each row or element, and for a container one or
/// more for each entry.
void PrintText(std::ostream& out, DataObject& object);
/// Prints the entries of a container, those of containers in it indented.
void PrintText(std::ostream& out, const DataContainer& container);

/// The value on one line, if it has one element; else what it is.
std::string BriefText(DataObject& object);

/// Numbers as numbers, those that are not finite as texts; matrices as {rows, columns, values}, which are rows of
/// elements; containers as objects; unbound data as {unbound: what it is}.
Json ToJson(DataObject& object);
Json ToJson(const DataContainer& container);

} // namespace Qor::Tivor::Tool
