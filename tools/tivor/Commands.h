#pragma once

#include "Ledger.h"
#include "Progress.h"

#include <ostream>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

/// The exit status of the program.
enum EStatus : int { eFINE = 0, eDEVIATES = 1, eERROR = 2 };

/// What the command line says; each command has its share of it.
struct Arguments {
    std::string file;
    std::string target;
    std::string text;
    std::vector<std::string> words; ///< the keys; for `Set` the value behind them
    std::string type;
    std::string number;    ///< of degrees, of a dimension, a tolerance
    std::string ranges[2]; ///< along dimension 1 and 2
    bool asJson = false;
    bool dropsUnread = false;
    bool creates = false;
    bool overwrites = false;
    bool checks = false;
    std::string elementType;
    std::vector<std::string> channels;
    bool isStrict = false;
    bool onlyMeasured = false;
    bool drawsProfile = false;
};

/// What commands print reaches the user when they return; when they raise something, only `err` does.
struct Console {
    std::ostream& out;
    std::ostream& err;
    std::string warnsOf{}; ///< what the warnings are about, where the user does not know
    bool hidesWarnings = false;
    Ledger losses{};          ///< what writers warned of
    bool tellsLosses = false; ///< whether the command prints them itself
    Progress progress{nullptr};
};

EStatus ShowInfo(const Arguments& arguments, Console& console);
EStatus List(const Arguments& arguments, Console& console);
EStatus Get(const Arguments& arguments, Console& console);
EStatus Set(const Arguments& arguments, Console& console);
EStatus Import(const Arguments& arguments, Console& console);
EStatus Convert(const Arguments& arguments, Console& console);
EStatus Rotate(const Arguments& arguments, Console& console);
EStatus Flip(const Arguments& arguments, Console& console);
EStatus Transpose(const Arguments& arguments, Console& console);
EStatus Crop(const Arguments& arguments, Console& console);
EStatus Render(const Arguments& arguments, Console& console);
EStatus Report(const Arguments& arguments, Console& console);
EStatus ShowTypes(const Arguments& arguments, Console& console);
EStatus ShowPlugIns(const Arguments& arguments, Console& console);
EStatus Diff(const Arguments& arguments, Console& console);
EStatus Hash(const Arguments& arguments, Console& console);
EStatus Check(const Arguments& arguments, Console& console);

} // namespace Qor::Tivor::Tool
