#include "../properties/Instrument.h"
#include "Alerts.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Core::Testing::Warnings;

template <class T>
std::shared_ptr<Array<T>> Samples(std::initializer_list<T> samples) {
    return MakeArray(std::span<const T>(samples.begin(), samples.size()));
}

template <class T = double>
std::shared_ptr<DataObject> Heights(std::size_t size1, std::size_t size2) {
    RowMajorMatrix<T> matrix(size1, size2);
    std::fill_n(matrix.data(), matrix.size(), T());
    return MakeData(matrix);
}

UnitizedDouble Mm(double value) { return {value, "Millimeter"}; }

template <class T>
std::string TextOf(const T& measured, const std::string& key) {
    const auto value = measured.GetContent()->Get(key);
    return value ? value->ToString() : "none";
}

std::string NamesOf(const PropertyContainer& properties) {
    std::vector<std::string> names;
    properties.EnumProperties(names);
    std::string text;
    for (const std::string& name : names)
        text += name + ' ';
    return text;
}

std::string PermissionsOf(const PropertyContainer& properties) {
    std::vector<std::string> names;
    properties.EnumProperties(names);
    std::string text;
    for (const std::string& name : names)
        text += static_cast<char>('0' + properties.GetPermissions(name));
    return text;
}

/// What is read back from either form.
template <class T>
std::vector<std::shared_ptr<T>> ReadBack(const T& measured) {
    DataContainer container;
    container.Put("m", ValueTraits<T>::MakeData(measured.Clone()));
    const auto bytes = Stored(container);
    Core::MemoryInputStream stream(bytes.data(), bytes.size());
    return {DataContainer::Create(stream)->GetPtr<T>("m"),
            DataContainer::FromXMLString(StoredXML(container))->template GetPtr<T>("m")};
}

struct Squares final : Position1D {
    UnitizedDouble GetPosition(std::uint64_t index) const override {
        return UnitizedDouble(static_cast<double>(index * index), index == 0 ? "Millimeter" : "Centimeter");
    }
    bool SpacingIsFixed() const override { return false; }
};

} // namespace

TEST(Data1D, DescribesItsSamples) {
    const auto profile = Data1D::CreateFrom(Samples<short>({3, 1, 2}));
    EXPECT_EQ(NamesOf(*profile), "Array DataKind DataScale NumPoints ValueTypeID ValueTypeName Version ");
    EXPECT_EQ(PermissionsOf(*profile), "3331111");
    EXPECT_EQ(profile->GetNumPoints(), 3u);
    EXPECT_EQ(profile->GetValueTypeID(), eINT16);
    EXPECT_EQ(profile->GetValueTypeName() + profile->GetDataKind() + TextOf(*profile, "Version"), "int16Unknown1.0");
    EXPECT_EQ(profile->GetDataScale(), UnitizedDouble(1.0));
    EXPECT_EQ(profile->GetSamples<short>()[2], 2);
    EXPECT_TRUE(profile->GetSamples<int>().empty());
    EXPECT_EQ(profile->ToString(), "Data1D of 3 int16");
    const auto text = [&](const char* name, const std::string& key) {
        const auto attribute = profile->GetAttributeByPropertyName(name, key);
        return attribute ? attribute->ToString() : std::string("none");
    };
    EXPECT_EQ(text("DataKind", sPROPERTY_DISPLAY_NAME) + '/' + text("DataKind", sPROPERTY_CATEGORY),
              "Kind Of Data/Data");
    EXPECT_EQ(text("NumPoints", sPROPERTY_CATEGORY) + text("NumPoints", sPROPERTY_DESCRIPTION), "Misc");
    EXPECT_EQ(text("Array", sPROPERTY_DISPLAY_NAME), "none");
    EXPECT_EQ(Tivor::GetValueTypeName(eBOOL) + Tivor::GetValueTypeName(eLONG), "Unknown TypeUnknown Type");
    for (const auto& [object, condition] :
         {std::pair<std::shared_ptr<DataObject>, const char*>(nullptr, "(p_spArrayData != nullptr)"),
          std::pair<std::shared_ptr<DataObject>, const char*>(MakeData(1), "IsScalarArrayData( *p_spArrayData )")}) {
        const auto error = RaisedBy<Core::AssertionError>([&given = object] { Data1D::CreateFrom(given); });
        EXPECT_EQ(error.GetText(), condition);
        EXPECT_EQ(error.GetContext().source, "Data1D");
    }
    EXPECT_EQ(Data1D().GetNumPoints(), 0u);
    EXPECT_EQ(Data1D().GetArrayDataObject(), nullptr);
}

TEST(Data1D, WorksOutPositionsFromItsExtent) {
    const std::pair<std::uint64_t, const char*> rows[] = {{11, "1 mm"}, {1, "10 mm"}, {0, "none"}};
    for (const auto& [count, expected] : rows) {
        DataContainer values;
        values.PutValue("NumPoints", count);
        values.PutValue("Extent", Mm(10));
        Data1D profile;
        profile.InputProperties(values);
        const auto before = Stored(*profile.GetContent());
        const auto constant = std::as_const(profile).GetPositionFunction();
        EXPECT_EQ(Stored(*profile.GetContent()), before);
        const auto positions = profile.GetPositionFunction();
        EXPECT_EQ(constant == nullptr, positions == nullptr);
        UnitizedDouble spacing(7);
        EXPECT_EQ(profile.GetFixedSpacing(spacing), count != 0);
        EXPECT_EQ(positions ? spacing.ToString() : "none", expected);
        EXPECT_EQ(profile.PropertyExists("PositionFunction"), count != 0);
        EXPECT_EQ(profile.PropertyExists("Extent"), count != 0);
        EXPECT_EQ(profile.IsReadable("PositionFunction") || profile.IsWritable("PositionFunction"), false);
        EXPECT_EQ(profile.GetPositionFunction(), positions);
    }
}

TEST(Data1D, KeepsOneTruthOfPositions) {
    const auto profile = Data1D::CreateFrom(Samples<double>({1, 2, 3, 4, 5}));
    UnitizedDouble spacing;
    EXPECT_FALSE(profile->GetFixedSpacing(spacing) || profile->GetPositionArray() || profile->GetPositionUnits());
    profile->SetFixedSpacing(UnitizedDouble(0.5, "Micrometer"));
    EXPECT_EQ(TextOf(*profile, "Extent"), "2 um");
    EXPECT_EQ(std::as_const(*profile).GetPositionArray()[4], 2.0);
    EXPECT_EQ(profile->GetPositionUnits()->GetName(), "Micrometer");
    EXPECT_FALSE(profile->PropertyExists("PositionArray"));
    EXPECT_EQ(profile->GetPositionArray()[3], 1.5);
    EXPECT_TRUE(profile->PropertyExists("PositionArray") && !profile->IsWritable("PositionArray"));

    // Other units in the extent, and more samples.
    EXPECT_TRUE(profile->SetProperty("Extent", MakeData(UnitizedDouble(0.002, "Millimeter"))));
    EXPECT_TRUE(profile->GetFixedSpacing(spacing));
    EXPECT_EQ(spacing.ToString(), "0.5 um");
    EXPECT_FALSE(profile->PropertyExists("PositionArray"));
    EXPECT_TRUE(profile->SetProperty("Extent", MakeData(UnitizedDouble(0.004, "Millimeter"))));
    EXPECT_TRUE(profile->GetFixedSpacing(spacing));
    EXPECT_EQ(spacing.ToString(), "0.001 mm");
    profile->GetPositionArray();
    EventLog log(*profile);
    profile->SetArrayDataObject(Samples<float>({1, 2, 3}));
    EXPECT_EQ(log.Take().size(), 5u); // samples, count, both of the type, extent
    EXPECT_EQ(TextOf(*profile, "Extent") + TextOf(*profile, "NumPoints") + profile->GetValueTypeName(),
              "0.002 mm3float");
    EXPECT_FALSE(profile->PropertyExists("PositionArray"));
    EXPECT_TRUE(profile->SetProperty("Array", Samples<float>({1, 2})));
    EXPECT_EQ(TextOf(*profile, "Extent") + TextOf(*profile, "NumPoints"), "0.001 mm2");
    RaisedBy<PropertyTypeMismatch>([&] { profile->SetProperty("Array", Samples<double>({1})); });

    const boost::shared_array<double> uneven(new double[2]{1, 5});
    profile->SetPositionFunction(
        std::make_shared<ArrayPosition1D>(uneven, 2, Core::UnitDictionary::Instance().Get("Micrometer")->Clone()));
    EXPECT_FALSE(profile->GetFixedSpacing(spacing) || profile->PropertyExists("Extent"));
    EXPECT_EQ(profile->GetPositionArray().get(), uneven.get());
    EXPECT_EQ(profile->GetPositionFunction()->GetPosition(1).ToString(), "5 um");
    profile->SetArrayDataObject(Samples<float>({1, 2, 3}));
    EXPECT_EQ(profile->GetPositionFunction(), nullptr);

    profile->SetPositionFunction(std::make_shared<Squares>());
    EXPECT_EQ(std::as_const(*profile).GetPositionArray()[2], 40);
    Warnings warnings;
    EXPECT_EQ(ReadBack(*profile)[0]->GetPositionFunction(), nullptr);
    EXPECT_EQ(warnings.GetNames(), (std::vector<std::string>{"OmittingProperty", "OmittingProperty"}));
    profile->RemovePositionInfo();
    EXPECT_EQ(NamesOf(*profile), "Array DataKind DataScale NumPoints ValueTypeID ValueTypeName Version ");

    // Arrays alone, as others may store them.
    profile->SetProperty("PositionArray", Samples<double>({0, 1, 5}));
    profile->SetProperty("PositionUnits",
                         MakeData(Core::UnitDescriptor(*Core::UnitDictionary::Instance().Get("Meter"))));
    EXPECT_EQ(profile->GetPositionFunction()->GetPosition(2).ToString(), "5 m");
    EXPECT_FALSE(profile->PropertyExists("PositionFunction"));
}

TEST(Data2D, DescribesItsSamples) {
    const auto surface = Data2D::Create(Heights<float>(3, 5));
    EXPECT_EQ(NamesOf(*surface),
              "Matrix Dimension1Points Dimension2Points MatrixType Aspect DataScale DataKind Version "
              "Origin ");
    EXPECT_EQ(PermissionsOf(*surface), "011133313");
    EXPECT_EQ(surface->GetNumDimension1Points(), 3u);
    EXPECT_EQ(surface->GetNumDimension2Points(), 5u);
    EXPECT_EQ(surface->GetMatrixTypeName() + surface->GetValueTypeName() + surface->GetDataKind(),
              "MatrixfloatUnknown");
    EXPECT_EQ(surface->GetMatrixType(), static_cast<std::uint32_t>(eMATRIX_FLOAT));
    EXPECT_EQ(surface->GetAspect(), 1.0F);
    EXPECT_EQ(surface->GetPropertyByName("Matrix"), nullptr);
    EXPECT_EQ(surface->ToString(), "Data2D of 3 x 5 float");
    EXPECT_TRUE(surface->SetValue("Origin", "Lower Right"));
    EXPECT_EQ(surface->GetOrigin(), Data2D::eLOWER_RIGHT);
    EXPECT_EQ(surface->GetPropertyText("Origin"), "Lower Right");
    RaisedBy<PropertyTypeMismatch>([&] { surface->SetValue("Origin", "Middle"); });
    RaisedBy<IllegalValueError>([&] { surface->SetOrigin(static_cast<Data2D::EOrigin>(4)); });
    const auto choices = std::dynamic_pointer_cast<DataContainerWrapper>(
        surface->GetAttributeByPropertyName("Origin", sSELECTABLE_PROPERTY_VALUES));
    EXPECT_EQ(Keys(*choices->GetData()), "Upper Left Lower Left Upper Right Lower Right ");

    const auto columns = Data2D::Create(MakeData(ColumnMajorMatrix<std::int64_t>(2, 4)));
    EXPECT_EQ(columns->GetMatrixTypeName() + columns->ToString(), "FortranMatrixData2D of 2 x 4 int64");
    for (const auto& [object, condition] :
         {std::pair<std::shared_ptr<DataObject>, const char*>(nullptr, "(p_spMatrixData!= nullptr)"),
          std::pair<std::shared_ptr<DataObject>, const char*>(Samples<int>({1}), "IsMatrixData( *p_spMatrixData )")}) {
        EXPECT_EQ(RaisedBy<Core::AssertionError>([&given = object] { Data2D::Create(given); }).GetText(), condition);
        EXPECT_EQ(
            RaisedBy<Core::AssertionError>([&, &given = object] { surface->SetMatrixDataObject(given); }).GetText(),
            condition);
    }
    EXPECT_EQ(surface->GetNumDimension1Points(), 3u);
}

TEST(Data2D, KeepsOneTruthOfPositions) {
    const auto surface = Data2D::Create(Heights(3, 5));
    surface->SetFixedSpacing(Mm(1), 2.0F);
    UnitizedDouble dim1;
    UnitizedDouble dim2;
    EXPECT_TRUE(surface->GetFixedSpacing(dim1, dim2));
    EXPECT_EQ(dim1.ToString() + ' ' + dim2.ToString(), "1 mm 2 mm");
    EXPECT_EQ(TextOf(*surface, "Dimension1Extent") + ' ' + TextOf(*surface, "Dimension2Extent"), "2 mm 8 mm");
    EXPECT_EQ(surface->GetAspect(), 2.0F);
    surface->SetFixedSpacing(Mm(1), UnitizedDouble(1000, "Micrometer"));
    EXPECT_EQ(surface->GetAspect(), 1.0F);
    EXPECT_EQ(std::as_const(*surface).GetDim2PositionArray()[4], 4000);
    EXPECT_EQ(surface->GetDim1PositionUnits()->GetName() + surface->GetDim2PositionUnits()->GetName(),
              "MillimeterMicrometer");

    EventLog log(*surface);
    surface->SetMatrixDataObject(Heights<std::int16_t>(2, 5));
    EXPECT_EQ(log.Take().size(), 4u); // samples, one count, type, one extent
    EXPECT_EQ(TextOf(*surface, "Dimension1Extent") + ' ' + TextOf(*surface, "Dimension2Extent"), "1 mm 4000 um");
    EXPECT_TRUE(surface->SetProperty("Dimension1Extent", MakeData(Mm(5))));
    EXPECT_TRUE(surface->GetFixedSpacing(dim1, dim2));
    EXPECT_EQ(dim1.ToString() + ' ' + dim2.ToString(), "5 mm 1000 um");
    EXPECT_EQ(surface->GetAspect(), 0.2F);

    const auto grid = std::make_shared<ArrayPosition2D>(boost::shared_array<double>(new double[2]{1, 3}),
                                                        boost::shared_array<double>(new double[5]{0, 1, 4, 9, 16}), 2,
                                                        5, Core::UnitDictionary::Instance().Get("Meter")->Clone(),
                                                        Core::UnitDictionary::Instance().Get("Second")->Clone());
    surface->SetPositionFunction(grid);
    EXPECT_EQ(surface->GetPositionFunction(), grid);
    EXPECT_EQ(surface->GetDim2PositionArray()[4], 16);
    EXPECT_FALSE(surface->PropertyExists("Dimension1Extent"));
    surface->RemovePositionInfo();
    EXPECT_EQ(surface->GetPositionFunction(), nullptr);

    // Dimensions of one point and of none.
    for (const std::size_t count : {1u, 0u}) {
        DataContainer values;
        values.Put("Matrix", Heights(count, 3));
        values.PutValue("Dimension1Extent", Mm(4));
        values.PutValue("Dimension2Extent", Mm(4));
        Data2D read;
        read.InputProperties(values);
        EXPECT_EQ(read.GetPositionFunction() != nullptr, count == 1);
        EXPECT_EQ(read.GetFixedSpacing(dim1, dim2) ? dim1.ToString() + ' ' + dim2.ToString() : "none",
                  count == 1 ? "4 mm 2 mm" : "none");
        EXPECT_EQ(read.PropertyExists("Dimension1Extent"), count == 1);
    }
}

TEST(MeasuredArrays, ComeBackAsTheyWere) {
    const auto surface = Data2D::Create(Heights(3, 5));
    surface->SetFixedSpacing(Mm(1), 2.0F);
    surface->SetDataKind("Height");
    surface->SetDataScale(UnitizedDouble(1, "Micrometer"));
    surface->SetOrigin(Data2D::eLOWER_LEFT);
    surface->SetProperty("Operator", MakeData(std::string("Emmy"))); // unknown here
    for (const auto& read : ReadBack(*surface)) {
        EXPECT_TRUE(*read == *surface);
        EXPECT_EQ(Stored(*read->GetContent()), Stored(*surface->GetContent()));
        EXPECT_EQ(PermissionsOf(*read), PermissionsOf(*surface));
        EXPECT_EQ(read->GetAttributeByPropertyName("DataKind", sPROPERTY_CATEGORY)->ToString(), "Data");
        RaisedBy<IllegalValueError>([&] { read->SetOrigin(static_cast<Data2D::EOrigin>(4)); });
        read->SetProperty("Dimension1Extent", MakeData(Mm(4)));
        UnitizedDouble dim1;
        UnitizedDouble dim2;
        EXPECT_TRUE(read->GetFixedSpacing(dim1, dim2));
        EXPECT_EQ(dim1.ToString(), "2 mm");
        EXPECT_FALSE(*read == *surface);
    }
    const auto copy = surface->Clone();
    EXPECT_TRUE(*copy == *surface);
    EXPECT_NE(copy->GetMatrixDataObject(), surface->GetMatrixDataObject());
    EXPECT_EQ(Data2D(*surface, false).GetMatrixDataObject(), surface->GetMatrixDataObject());
    copy->SetProperty("Dimension2Extent", MakeData(Mm(80)));
    EXPECT_EQ(copy->GetAspect(), 20.0F); // the copy follows its own extents
    EXPECT_EQ(surface->GetAspect(), 2.0F);
    *copy = *surface;
    EXPECT_TRUE(*copy == *surface);
    copy->ConvertDataScale("Millimeter");
    EXPECT_EQ(copy->GetDataScale().ToString(), "0.001 mm");
    RaisedBy<Core::IllegalUnitConversion>([&] { copy->ConvertDataScale("Second"); });
    EXPECT_EQ(copy->GetDataScale().ToString(), "0.001 mm");
}

TEST(MeasuredArrays, HoldEveryElementType) {
    const std::set<std::string> withoutName{"bool", "long", "ulong"};
    const auto check = [&](const auto& measured, const std::string& name, const std::string& described) {
        EXPECT_EQ(measured->ToString(), described + (withoutName.count(name) != 0 ? "Unknown Type" : name));
        for (const auto& read : ReadBack(*measured))
            EXPECT_EQ(Stored(*read->GetContent()), Stored(*measured->GetContent())) << name;
    };
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    check(Data1D::CreateFrom(CollectionOf<Array<T>>(SamplesOf(As<T>()))), name,                                        \
          "Data1D of " + std::to_string(SamplesOf(As<T>()).size()) + ' ');
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
#define TIVOR_VALUE(T, id, unused)                                                                                     \
    {                                                                                                                  \
        ETypeID type = eNO_TYPE;                                                                                       \
        std::string name;                                                                                              \
        ValueTraits<T>::GetBaseDataTypeInfo(type, name);                                                               \
        const auto surface = Data2D::Create(MatrixOf<T>(2, 3, SamplesOf(As<T::value_type>())));                        \
        EXPECT_TRUE(static_cast<std::uint32_t>(surface->GetMatrixType()) == id && surface->GetValueType() == type);    \
        EXPECT_EQ(surface->GetMatrixTypeName(), id < eFORTRAN_MATRIX_INT8 ? "Matrix" : "FortranMatrix");               \
        check(surface, type == eCOMPLEX ? "complex" : name, "Data2D of 2 x 3 ");                                       \
    }
    TIVOR_MATRIX_VALUES
#undef TIVOR_VALUE
}

TEST(MeasuredArrays, StandInContainersAsContainersDo) {
    const auto surface = Data2D::Create(Heights(3, 5));
    const auto container = DataContainer::Create();
    const auto outer = DataContainer::Create();
    outer->Put("inner", container);
    container->Put("surface", ValueTraits<Data2D>::MakeData(surface));
    outer->EnableSizeTracking(true);
    const std::uint64_t size = outer->GetDataSize_bytes();
    surface->SetProperty("DataKind", MakeData(std::string("Height and more")));
    EXPECT_EQ(outer->GetDataSize_bytes(), size + 8);
    EXPECT_EQ(outer->GetDataSize_bytes(), Stored(*outer).size());
    const Core::LogicError circle =
        RaisedBy<Core::LogicError>([&] { surface->SetProperty("all", std::make_shared<DataContainerWrapper>(outer)); });
    EXPECT_NE(circle.GetText().find("itself"), std::string::npos);
    EXPECT_FALSE(surface->PropertyExists("all"));
    // Another value in the same object.
    const auto object = std::dynamic_pointer_cast<Data<Data2D>>(container->Get("surface"));
    object->EnableDataLocking();
    std::vector<std::shared_ptr<Core::Lock>> locks;
    object->AcquireLocks(locks);
    EXPECT_EQ(locks.size(), 2u); // its own, and that of the properties
    locks.clear();
    const auto next = Data2D::Create(Heights(1, 1));
    object->SetData(next);
    EXPECT_EQ(outer->GetDataSize_bytes(), Stored(*outer).size());
    next->SetProperty("DataKind", MakeData(std::string("Phase")));
    EXPECT_EQ(outer->GetDataSize_bytes(), Stored(*outer).size());
    EXPECT_TRUE(surface->SetProperty("all", std::make_shared<DataContainerWrapper>(outer)));
    surface->Clone();
}

TEST(MeasuredArraysStress, AreReadAndWrittenWhileTheyChange) {
    const auto surface = Data2D::Create(Heights(3, 5));
    const auto container = DataContainer::Create(true);
    const auto object = ValueTraits<Data2D>::MakeData(surface);
    object->EnableDataLocking();
    container->Put("surface", object);
    const std::function<void(int)> works[] = {
        [&](int i) { surface->SetFixedSpacing(Mm(i), 2.0F); },
        [&](int i) { surface->SetMatrixDataObject(Heights(3, 5 + static_cast<std::size_t>(i % 2))); },
        [&](int) {
            UnitizedDouble dim1;
            UnitizedDouble dim2;
            if (std::as_const(*surface).GetFixedSpacing(dim1, dim2)) {
                EXPECT_EQ(dim1.GetValue() * 2, dim2.GetValue());
            }
            EXPECT_EQ(surface->Clone()->GetNumDimension1Points(), 3u);
        },
        [&](int) {
            Core::MemoryOutputStream written;
            const std::uint64_t size = container->OutputData(written, true);
            EXPECT_EQ(size, written.GetSize());
            Core::MemoryInputStream stream(written.GetBytes());
            EXPECT_TRUE(DataContainer::Create(stream)->GetPtr<Data2D>("surface"));
        },
        [&](int) { surface->RemovePositionInfo(); }};
    std::vector<std::thread> threads;
    for (const auto& work : works)
        threads.emplace_back([&work] {
            for (int i = 1; i <= 200; ++i)
                work(i);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(surface->GetMatrixDataObject()->GetTypeName(), "Matrix");
}

// Whatever a file brings, getters answer.
TEST(MeasuredArrays, SurviveValuesOfOtherTypes) {
    const auto surface = Data2D::Create(Heights(3, 5));
    surface->SetFixedSpacing(Mm(1), Mm(1));
    surface->GetDim1PositionArray();
    const auto profile = Data1D::CreateFrom(Samples<double>({1, 2, 3}));
    profile->SetFixedSpacing(Mm(1));
    profile->GetPositionArray();
    const auto tryAll = [&](const auto& measured, auto use) {
        for (const auto& entry : *measured->GetContent())
            for (const auto& object : StrangeObjects()) {
                DataContainer values(*measured->GetContent());
                values.Put(entry.key, object);
                auto read = std::decay_t<decltype(*measured)>::Create();
                try {
                    read->InputProperties(values);
                    use(*read);
                    use(std::as_const(*read));
                    read->Clone();
                } catch (const Core::Error& error) {
                    EXPECT_FALSE(error.GetText().empty());
                }
            }
    };
    UnitizedDouble one;
    UnitizedDouble two;
    tryAll(surface, [&](auto& read) {
        read.GetNumDimension1Points();
        read.GetMatrixType();
        read.GetValueTypeName();
        read.GetOrigin();
        read.GetAspect();
        read.GetFixedSpacing(one, two);
        read.GetDim1PositionArray();
        read.GetDim2PositionUnits();
        read.GetDataScale();
        read.ToString();
    });
    tryAll(profile, [&](auto& read) {
        read.GetFixedSpacing(one);
        read.GetPositionArray();
        read.GetPositionUnits();
        read.GetValueTypeID();
        read.ToString();
    });
}

} // namespace Qor::Tivor::Testing
