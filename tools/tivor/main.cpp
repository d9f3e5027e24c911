#include "Tool.h"

#include <QorCore/System.h>

#include <iostream>

int main(int count, char** arguments) {
    using Qor::Core::System;
    std::ios::sync_with_stdio(false);
    return Qor::Tivor::Tool::RunTool(System::GetArguments(count, arguments), std::cout, std::cerr,
                                     System::IsTerminal(Qor::Core::eSTANDARD_ERROR));
}
