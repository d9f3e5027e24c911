#pragma once

#include "../container/ContentSerializer.h"

namespace Qor::Tivor {

/// The container is that of the properties.
template <class T>
class MeasuredArraySerializer final : public ContentSerializer<T> {
public:
    using ContentSerializer<T>::ContentSerializer;

private:
    void TakeOver(T& value, DataContainer& read) const override { value.InputProperties(read); }
    void WarnOfOmissions(const T& value) const override { value.WarnOfOmissions(); }
};

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<MeasuredArraySerializer<T>>(object);
}

} // namespace Qor::Tivor
