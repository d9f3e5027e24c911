#include "Tool.h"

#include <iostream>

int main(int count, char** arguments) {
    std::ios::sync_with_stdio(false);
    return Qor::Tivor::Tool::RunTool({arguments + 1, arguments + count}, std::cout, std::cerr);
}
