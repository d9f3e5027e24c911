#include "Tool.h"

#include <QorCore/System.h>

#include <iostream>

int main(int count, char** arguments) {
    std::ios::sync_with_stdio(false);
    return Qor::Tivor::Tool::RunTool(Qor::Core::System::GetArguments(count, arguments), std::cout, std::cerr);
}
