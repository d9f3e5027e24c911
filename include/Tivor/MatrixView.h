#pragma once

#include <QorCore/Message.h>
#include <Tivor/Data2D.h>

#include <span>

namespace Qor::Tivor {

/// The samples of a matrix, seen in the same way whatever its storage order: `view(i, j)` is the element with index i
/// in dimension 1 and j in dimension 2. `MatrixView<const T>` only reads. A view shares the elements and keeps them
/// alive, also when the surface or the object gets others.
///
/// Thread rule: as for the elements; with locking enabled on the object, hold its `GetDataLock` while using them.
template <class T>
class MatrixView {
public:
    using value_type = std::remove_const_t<T>;

    template <class Order>
    requires(!std::is_const_v<T>) explicit MatrixView(Nalix::Matrix<value_type, Order>& matrix) { Show(matrix); }
    template <class Order>
    requires std::is_const_v<T>
    explicit MatrixView(const Nalix::Matrix<value_type, Order>& matrix) { Show(matrix); }

    /// Raises `LogicError` unless the object holds a matrix of this element type.
    explicit MatrixView(DataObject& object) requires(!std::is_const_v<T>) {
        Require(ShowObject<RowMajorMatrix<value_type>>(object) || ShowObject<ColumnMajorMatrix<value_type>>(object),
                object);
    }
    explicit MatrixView(const DataObject& object) requires std::is_const_v<T> {
        Require(ShowObject<RowMajorMatrix<value_type>>(object) || ShowObject<ColumnMajorMatrix<value_type>>(object),
                object);
    }

    /// The samples of a surface. Raises `PropertyTypeMismatch` unless there are some of this element type.
    explicit MatrixView(Data2D& surface) requires(!std::is_const_v<T>) { ShowSamples(surface); }
    explicit MatrixView(const Data2D& surface) requires std::is_const_v<T> { ShowSamples(surface); }

    std::size_t size1() const { return m_size1; }
    std::size_t size2() const { return m_size2; }
    std::size_t size() const { return m_size1 * m_size2; }
    /// How far apart two elements lie in memory, in elements, whose indices of that dimension differ by one.
    std::size_t stride1() const { return m_step1; }
    std::size_t stride2() const { return m_step2; }
    T* data() const { return m_data; }
    T& operator()(std::size_t i, std::size_t j) const { return m_data[i * m_step1 + j * m_step2]; }

    /// The elements as they lie in memory: dimension 2 runs fastest when `IsRowMajor`, else dimension 1.
    std::span<T> GetElements() const { return {m_data, size()}; }
    bool IsRowMajor() const { return m_isRowMajor; }

private:
    template <class Matrix>
    void Show(Matrix& matrix) {
        using Order = typename Matrix::order_type;
        m_owner = std::make_shared<std::remove_const_t<Matrix>>(matrix);
        m_data = matrix.data();
        m_size1 = matrix.size1();
        m_size2 = matrix.size2();
        m_step1 = Order::IndexOf(1, 0, m_size1, m_size2);
        m_step2 = Order::IndexOf(0, 1, m_size1, m_size2);
        m_isRowMajor = std::is_same_v<Order, Nalix::basic_row_major>;
    }

    template <class Matrix, class Object>
    bool ShowObject(Object& object) {
        using Wrapper =
            std::conditional_t<std::is_const_v<Object>, const GenericWrapper<Matrix>, GenericWrapper<Matrix>>;
        auto* const wrapper = dynamic_cast<Wrapper*>(&object);
        const auto matrix = wrapper != nullptr ? wrapper->GetData() : nullptr;
        if (!matrix)
            return false;
        Show(*matrix);
        return true;
    }

    template <class Surface>
    void ShowSamples(Surface& surface) {
        const auto samples = surface.GetMatrixDataObject();
        if (samples &&
            (ShowObject<RowMajorMatrix<value_type>>(*samples) || ShowObject<ColumnMajorMatrix<value_type>>(*samples)))
            return;
        const std::string expected = GetValueTypeName(ValueTraits<value_type>::GetTypeID());
        const std::string found = samples ? "samples of " + surface.GetValueTypeName() : "none";
        Core::Error::RaiseError(PropertyTypeMismatch(Core::FormatText(
                                    "Expected a surface with samples of %1%, found %2%", {expected, found})),
                                QOR_CODE_CONTEXT("MatrixView"), "Qor.Tivor.MatrixView");
    }

    static void Require(bool isShown, const DataObject& object) {
        if (!isShown)
            Core::Error::RaiseError(
                Core::LogicError(Core::FormatText("A matrix of elements %1% was expected, and a %2% found",
                                                  {ValueTraits<value_type>::GetTypeName(), object.GetTypeName()})),
                QOR_CODE_CONTEXT("MatrixView"), "Qor.Tivor.MatrixView");
    }

    std::shared_ptr<const void> m_owner;
    T* m_data = nullptr;
    std::size_t m_size1 = 0;
    std::size_t m_size2 = 0;
    std::size_t m_step1 = 0;
    std::size_t m_step2 = 0;
    bool m_isRowMajor = true;
};

} // namespace Qor::Tivor
