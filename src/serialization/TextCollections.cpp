#include "CollectionSerializer.h"

#include <QorCore/Message.h>
#include <Tivor/CollectionSerialization.h>

namespace Qor::Tivor {

ShrunkCollection::~ShrunkCollection() = default;

void WarnOfShrinking(const DataObject& object, std::uint64_t stored, std::uint64_t kept) {
    Core::Warning::RaiseWarning(
        ShrunkCollection(Core::FormatText("A %1% was stored with %2% elements and holds %3% of them: the others equal "
                                          "one of these, or have no place in their order",
                                          {object.GetTypeName(), stored, kept})),
        QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.CollectionSerializer");
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_STRING_COLLECTION_VALUES
TIVOR_UNITIZED_COLLECTION_VALUES

} // namespace Qor::Tivor
