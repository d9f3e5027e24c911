#pragma once

#include "Display.h"

#include <Tivor/DataContainer.h>

#include <functional>

namespace Qor::Tivor::Tool {

/// The entries of a container, or the properties of a measured array; null for other objects.
std::shared_ptr<const DataContainer> EntriesIn(DataObject& object);

/// Prints an object: a text as it is, anything else as lines: one for each row or element, and for a container or a
/// measured array one or more for each entry.
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
