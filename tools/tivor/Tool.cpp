#include "Tool.h"

#include "Commands.h"
#include "Display.h"
#include "Manual.h"

#include <QorCore/Alert.h>
#include <QorCore/Context.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace Qor::Tivor::Tool {

namespace {

using Command = EStatus (*)(const Arguments& arguments, Console& console);

class WarningPrinter final : public Core::AlertHandler {
public:
    explicit WarningPrinter(Console& console) : m_console(console) {}

    void OnWarning(const Core::Warning& warning) override {
        if (m_console.hidesWarnings || warning.GetTypeName() == "NoDefaultDataFile") // which is what a user expects
            return;
        if (IsLoss(warning))
            m_console.losses.push_back(LossOf(warning));
        if (IsLoss(warning) && m_console.tellsLosses)
            return;
        m_console.progress.Wipe();
        const std::string& of = m_console.warnsOf;
        m_console.err << "tivor: warning: " << (of.empty() ? "" : Show(of) + ": ") << OneLine(warning.GetText())
                      << '\n';
    }

private:
    Console& m_console;
};

// The parser takes negative numbers for options, texts in brackets for lists, and drops some others. A mark in front of
// all that is no option keeps it from looking into them.
constexpr char mark = '\x01';

bool IsOption(const std::string& word) { return word.starts_with("--") || word == "-h"; }

std::vector<std::string> Mark(const std::vector<std::string>& words) {
    std::vector<std::string> marked;
    bool hasCommand = false;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--") {
            std::transform(word + 1, words.end(), std::back_inserter(marked),
                           [](const std::string& rest) { return mark + rest; });
            break;
        }
        const bool isPlain = IsOption(*word) || !std::exchange(hasCommand, true);
        marked.push_back(isPlain ? *word : mark + *word);
    }
    return marked;
}

void Unmark(std::string& word) {
    if (!word.empty() && word.front() == mark)
        word.erase(0, 1);
}

void Unmark(Arguments& arguments) {
    for (std::string* const word : {&arguments.file, &arguments.target, &arguments.text, &arguments.type,
                                    &arguments.number, &arguments.ranges[0], &arguments.ranges[1]})
        Unmark(*word);
    Unmark(arguments.elementType);
    for (std::vector<std::string>* const words : {&arguments.words, &arguments.channels})
        for (std::string& word : *words)
            Unmark(word);
}

/// The commands and their options.
class CommandLine {
public:
    CommandLine() {
        m_app.require_subcommand(1);
        m_app.footer("Keys are given one by one, from the outermost on. What follows \"--\" is taken as it is.\n"
                     "Exit status: 0 fine; 1 something deviates or could not be read; 2 an error.\n"
                     "\"tivor --man\" prints the manual page, \"tivor --completion\" the completion for bash.");
        AddFile(Add("info",
                    "What a file is; of a binary one only the headers are read, and, up to 64 MiB, measured arrays",
                    ShowInfo));
        AddKeys(AddFile(Add("ls", "The entries of a file, or those below the keys, read in the same way", List)));
        AddKeys(AddFile(Add("get", "The value that the keys lead to, or all that is below them", Get)));
        AddSet();
        AddImport();
        AddConvert();
        AddTurns();
        AddPictures();
        Add("types", "The file types, the built-in classes and the plug-ins", ShowTypes);
        Add("plugins", "The plug-ins that were found, and why some were not loaded", ShowPlugIns);
        AddComparisons();
    }

    /// Returns the command, or null when all is said already.
    Command Parse(const std::vector<std::string>& words, std::ostream& out, std::ostream& err, int& status) {
        RequireCommand(words);
        if (WritesOfItself(words, out))
            return nullptr;
        std::vector<std::string> marked = Mark(words);
        std::reverse(marked.begin(), marked.end());
        try {
            m_app.parse(std::move(marked));
        } catch (const CLI::Success& request) {
            status = m_app.exit(request, out, err);
            return nullptr;
        } catch (const CLI::ParseError& error) {
            std::string text = error.what();
            text.erase(std::remove(text.begin(), text.end(), mark), text.end());
            err << "tivor: " << OneLine(text) << "\n       \"tivor COMMAND --help\" tells what is expected\n";
            status = eERROR;
            return nullptr;
        }
        Unmark(m_arguments);
        return m_command;
    }

    const Arguments& GetArguments() const { return m_arguments; }

private:
    bool WritesOfItself(const std::vector<std::string>& words, std::ostream& out) const {
        const std::string option = words.size() == 1 ? words.front() : std::string();
        if (option == "--man")
            WriteManualPage(m_app, out);
        else if (option == "--completion")
            WriteCompletion(m_app, out);
        else
            return false;
        return true;
    }

    void RequireCommand(const std::vector<std::string>& words) const {
        if (words.empty() || IsOption(words.front()))
            return;
        std::string names;
        for (const CLI::App* const command : m_app.get_subcommands({})) {
            if (command->get_name() == words.front())
                return;
            names += (names.empty() ? "" : ", ") + command->get_name();
        }
        Fail("Expected one of the commands " + names + ", found " + Show(words.front()));
    }

    CLI::App* Add(const char* name, const char* description, Command command) {
        CLI::App* const added = m_app.add_subcommand(name, description);
        added->add_flag("--json", m_arguments.asJson, "For machines");
        added->callback([this, command] { m_command = command; });
        return added;
    }
    CLI::App* AddFile(CLI::App* command) {
        command->add_option("FILE", m_arguments.file, "The data file")->type_name("")->required();
        return command;
    }
    CLI::App* AddKeys(CLI::App* command) {
        command->add_option("KEY", m_arguments.words, "One key per level")->type_name("");
        return command;
    }

    void AddSet() {
        CLI::App* const set = AddFile(Add("set", "Changes or adds a number or a text, and saves the file", Set));
        set->add_option("KEY... VALUE", m_arguments.words, "One key per level, then the value")
            ->type_name("")
            ->required();
        set->add_option("--type", m_arguments.type,
                        "The class of a new entry, AsciiString unless given; an existing entry keeps its own")
            ->type_name("CLASS");
        set->add_flag("--drop-unread", m_arguments.dropsUnread, "Saves although entries that cannot be read get lost");
        set->add_flag("--create", m_arguments.creates, "Makes the file where there is none");
    }

    void AddImport() {
        CLI::App* const import =
            Add("import", "Puts a surface or a profile that was measured into a new data file", Import);
        import->add_option("TEXT", m_arguments.text, "A text file with the numbers")->type_name("")->required();
        AddFile(import);
        import->add_flag("--force", m_arguments.overwrites, "Replaces a file that exists");
        import->add_flag("--check", m_arguments.checks, "Writes nothing: tells where the file is not what the text is");
        import->footer(
            "A surface has header lines \"# Name: text\" (Channel, Width, Height, Value units), then rows of\n"
            "heights between tabs. It becomes a Data2D: dimension 1 is down the rows, the spacings are Height\n"
            "and Width over the number of points.\n"
            "A profile has no header, and a position and a height per line. It becomes a Data1D, with a\n"
            "fixed spacing if there is one of at least ten units of the last digit whose multiples are the\n"
            "positions, each when rounded to its digits in the text: so these can be told from it. Else, and\n"
            "when the first position is not 0, all positions are kept as they are. Both are plain numbers.");
    }

    void AddConvert() {
        CLI::App* const convert =
            Add("convert", "Makes a file of another type of a data file, or of each one in a folder", Convert);
        convert->add_option("FROM", m_arguments.file, "A data file, or a folder")->type_name("")->required();
        convert->add_option("TO", m_arguments.target, "The new file, or the folder for the new files")
            ->type_name("")
            ->required();
        convert
            ->add_option("--to", m_arguments.type,
                         "The file type or one of its extensions; for a file, the extension of TO tells it, too")
            ->type_name("TYPE");
        convert->add_flag("--force", m_arguments.overwrites, "Replaces files that exist");
        convert->add_flag("--drop-unread", m_arguments.dropsUnread, "Leaves out entries that cannot be read");
        convert->add_flag("--strict", m_arguments.isStrict, "Saves nothing that is not all that its source is");
        convert
            ->add_option(
                "--type", m_arguments.elementType,
                "The element type of the samples of all measured arrays, as float, double or int16; floats are "
                "rounded, integers must be exact")
            ->type_name("ELEMENT");
        convert
            ->add_option("--channel", m_arguments.channels,
                         "Only the measured arrays of this kind, or with this key; may be given again")
            ->type_name("NAME")
            ->expected(1)
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        convert->footer(
            "What a file does not hold as its source does is told by a line each: dropped, retyped, rounded or\n"
            "rescaled; the exit status is 1 then. What --channel leaves out is not among it.");
    }

    void AddTurns() {
        AddTurn("rotate", "Turns the surfaces of a file", Rotate)
            ->add_option("--by", m_arguments.number,
                         "90 unless given, 180 or 270: clockwise, with the first row of samples at the top")
            ->type_name("DEGREES");
        AddTurn("flip", "Reverses the surfaces of a file along a dimension", Flip)
            ->add_option("--along", m_arguments.number, "1, which reverses the order of the rows, or 2")
            ->type_name("DIMENSION")
            ->required();
        AddTurn("transpose", "Makes rows of the columns of the surfaces of a file", Transpose);
        CLI::App* const crop = AddTurn("crop", "Cuts a block out of the surfaces of a file", Crop);
        for (const int dimension : {1, 2})
            crop->add_option("--dim" + std::to_string(dimension), m_arguments.ranges[dimension - 1],
                             "The index of the first " + std::string(dimension == 1 ? "row" : "column") +
                                 " and of the one behind the last, either of which may be left out")
                ->type_name("BEGIN:END");
    }

    CLI::App* AddTurn(const char* name, const char* description, Command command) {
        CLI::App* const added = Add(name, description, command);
        added->add_option("FROM", m_arguments.file, "The data file")->type_name("")->required();
        added->add_option("TO", m_arguments.target, "The new file")->type_name("")->required();
        added->add_option("KEY", m_arguments.words, "Where the surface stands, or some; all unless given")
            ->type_name("");
        added->add_flag("--force", m_arguments.overwrites, "Replaces a file that exists");
        added->add_flag("--drop-unread", m_arguments.dropsUnread, "Leaves out entries that cannot be read");
        added->footer("Of a surface, the kind and the scale of the data and the positions are carried over: these in\n"
                      "their order, exchanged with the dimensions, or cut with the samples; a fixed spacing does not\n"
                      "tell where a block was. What else is left out is told. All other entries stay as they are.");
        return added;
    }

    void AddComparisons() {
        CLI::App* const diff = Add("diff", "What differs between two files, of whatever types", Diff);
        diff->add_option("A", m_arguments.file, "A data file")->type_name("")->required();
        diff->add_option("B", m_arguments.target, "Another one")->type_name("")->required();
        diff->add_option("--tol", m_arguments.number,
                         "By how much samples may differ, with a unit of their dimension, as 0.1nm or \"5 um\"; a "
                         "number alone is for plain numbers")
            ->type_name("TOLERANCE");
        diff->add_flag("--data", m_arguments.onlyMeasured, "Measured arrays only");
        diff->footer("Surfaces and profiles are compared by what they mean, in SI units: samples, missing points,\n"
                     "positions, points, kind. Without --tol samples must be equal as doubles, but for 1e-15 of the\n"
                     "value where units or scales differ; so must positions. Other entries are compared by their\n"
                     "values. Element types and the name of a file's only surface are notes, and no difference.\n"
                     "Exit status: 0 the same; 1 they differ; 2 an error.");
        CLI::App* const hash =
            AddKeys(AddFile(Add("hash", "A hash of what was measured, the same in every file type", Hash)));
        hash->footer("XXH3-128 of samples, units and positions of each surface and profile, in SI units, whatever\n"
                     "their element type, storage order, unit and scale; and one of all. Names and metadata are no\n"
                     "part of it.");
        AddFile(Add("check", "What in a file deviates from its format, or is implausible", Check))
            ->footer("Exit status: 0 nothing; 1 something; 2 the file cannot be read.");
    }

    void AddPictures() {
        CLI::App* const render = AddFile(Add("render", "Makes a picture of a surface or a profile, as PNG", Render));
        render->add_option("PNG", m_arguments.target, "The new file")->type_name("")->required();
        AddKeys(render);
        render->add_flag("--profile", m_arguments.drawsProfile, "Of a surface the row in the middle as a line");
        render
            ->add_option("--width", m_arguments.number,
                         "Of the longer side of a surface, or of the picture of a profile; 1000 unless given")
            ->type_name("PIXELS");
        render->add_flag("--force", m_arguments.overwrites, "Replaces a file that exists");
        render->footer("Where the keys do not lead to one surface or profile: the primary surface of a data set, else\n"
                       "the first surface below them, else the first profile.");
        CLI::App* const report =
            AddFile(Add("report", "Tells all about a file, with pictures, as a page of HTML", Report));
        report->add_option("HTML", m_arguments.target, "The new file")->type_name("")->required();
        report->add_flag("--force", m_arguments.overwrites, "Replaces a file that exists");
    }

    Arguments m_arguments;
    Command m_command = nullptr;
    CLI::App m_app{"Looks into data files of optical surface metrology, and changes them", "tivor"};
};

/// "help" and "help COMMAND" as they are asked by an option.
std::vector<std::string> AskingForHelp(const std::vector<std::string>& words) {
    if (words.empty() || words.size() > 2 || words.front() != "help")
        return words;
    return words.size() == 1 ? std::vector<std::string>{"--help"} : std::vector<std::string>{words.back(), "--help"};
}

int Execute(Command command, const Arguments& arguments, std::ostream& out, std::ostream& err, bool isErrTerminal) {
    std::ostringstream printed;
    Console console{.out = printed, .err = err, .progress = Progress(isErrTerminal ? &err : nullptr)};
    const WarningPrinter printer(console);
    Core::ReadLimits limits;
    limits.moduleNames = Core::EModuleNames::bare;
    limits.keepsUnavailable = true;
    const Core::Context::ScopedLimits scope(limits);
    const EStatus status = command(arguments, console);
    console.progress.Wipe();
    out << printed.view() << std::flush;
    if (!out)
        Core::Error::RaiseError(Core::IOError("The output could not be written"), QOR_CODE_CONTEXT("Tool"), category);
    return status;
}

} // namespace

int RunTool(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err, bool isErrTerminal) {
    try {
        CommandLine line;
        int status = eFINE;
        const Command command = line.Parse(AskingForHelp(arguments), out, err, status);
        return command != nullptr ? Execute(command, line.GetArguments(), out, err, isErrTerminal) : status;
    } catch (const std::exception& error) {
        Explain(error, err);
    }
    return eERROR;
}

} // namespace Qor::Tivor::Tool
