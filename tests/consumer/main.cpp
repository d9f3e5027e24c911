// What a customer's first program does: store values, write them, read them back.
#include <Nalix/Matrix.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/DataContainer.h>

#include <iostream>

int main() {
    using namespace Qor;
    Tivor::RowMajorMatrix<double> heights(2, 3);
    heights(1, 2) = 2.5;

    Tivor::DataContainer container;
    container.PutValue("spacing", 0.5);
    container.PutValue("heights", heights);
    Core::MemoryOutputStream written;
    container.OutputData(written, false);

    Core::MemoryInputStream stream(written.GetBytes());
    const auto read = Tivor::DataContainer::Create(stream);
    const auto spacing = read->GetValue<double>("spacing");
    const auto readHeights = read->GetValue<Tivor::RowMajorMatrix<double>>("heights");
    const bool same = spacing == 0.5 && readHeights && (*readHeights)(1, 2) == 2.5;
    std::cout << written.GetSize() << " bytes, " << (same ? "read back" : "NOT read back") << '\n';
    return same ? 0 : 1;
}
