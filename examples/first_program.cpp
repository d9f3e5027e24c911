#include <Tivor/BinaryDataFile.h>

#include <algorithm>
#include <iostream>

int main() {
    using namespace Qor::Tivor;
    BinaryDataFile file("first.dataset", DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
    RowMajorMatrix<double> heights(2, 3); // two rows of three samples
    std::fill_n(heights.data(), heights.size(), 0.25);
    file.PutValue("Heights", heights);
    file.GetSubData({"Axes", "X"}, true)->PutValue("Unit", "µm");
    file.Flush();
    file.Close();

    BinaryDataFile again("first.dataset", DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    std::cout << again.GetPtr<RowMajorMatrix<double>>("Heights")->size() << " heights, x in "
              << *again.GetSubData({"Axes", "X"}, false)->GetPtr<std::string>("Unit") << '\n';
}
