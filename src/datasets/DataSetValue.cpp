#include "../container/ContentSerializer.h"

#include <QorCore/Message.h>
#include <Tivor/DataSet.h>

namespace Qor::Tivor {

/// The container is that of the common layout. What is read stays as it is until somebody asks the set, so that it is
/// written again as it was, and crowds of sets that lack everything stay small.
class DataSetSerializer final : public ContentSerializer<DataSet> {
public:
    using ContentSerializer::ContentSerializer;

private:
    void TakeOver(DataSet& value, DataContainer& read) const override { value.TakeContent(read); }
};

template class GenericWrapper<IDataSet>;

boost::logic::tribool ValueTraits<IDataSet>::Equal(const IDataSet& left, const IDataSet& right) {
    const auto* const one = dynamic_cast<const DataSet*>(&left);
    const auto* const other = dynamic_cast<const DataSet*>(&right);
    if (one == nullptr || other == nullptr)
        return &left == &right ? boost::logic::tribool(true) : boost::logic::indeterminate;
    return *one == *other;
}

std::string ValueTraits<IDataSet>::ToString(const IDataSet& value) {
    const auto* const own = dynamic_cast<const DataSet*>(&value);
    return own != nullptr ? own->ToString() : "IDataSet";
}

std::shared_ptr<DataContainer> ValueTraits<IDataSet>::GetContent(const IDataSet& value) {
    const auto* const own = dynamic_cast<const DataSet*>(&value);
    return own != nullptr ? own->GetContent() : nullptr;
}

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<DataSetSerializer>(object);
}

TIVOR_DEFINE_DERIVED_VALUE(IDataSet, DataSet)

} // namespace Qor::Tivor
