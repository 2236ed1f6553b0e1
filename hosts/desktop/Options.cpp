#include "Options.h"

namespace desktop {
namespace {

// Options that take a value, and where in Options it goes.
std::string* ValueSlot(Options& options, std::string_view name) {
    if (name == "--commands") {
        return &options.commands;
    }
    if (name == "--screenshot") {
        return &options.screenshot;
    }
    return nullptr;
}

}  // namespace

std::optional<Options> ParseOptions(const std::vector<std::string>& args, std::string& error) {
    Options options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string name = args[i], value;
        bool inlineValue = false;
        if (const auto eq = name.find('='); name.starts_with("--") && eq != std::string::npos) {
            value = name.substr(eq + 1);
            name = name.substr(0, eq);
            inlineValue = true;
        }
        if (name == "--help" || name == "-h") {
            options.help = true;
        } else if (name == "--quit") {
            options.quit = true;
        } else if (std::string* slot = ValueSlot(options, name)) {
            if (!inlineValue) {
                if (i + 1 >= args.size()) {
                    error = name + " needs a file name";
                    return std::nullopt;
                }
                value = args[++i];
            }
            if (value.empty()) {
                error = name + " needs a file name";
                return std::nullopt;
            }
            *slot = value;
        } else if (name.starts_with("-") && name != "-") {
            error = "unknown option '" + args[i] + "' (see --help)";
            return std::nullopt;
        } else if (!options.file.empty()) {
            error = "only one drawing can be opened, not both '" + options.file + "' and '" + name +
                    "'";
            return std::nullopt;
        } else {
            options.file = name;
        }
    }
    return options;
}

std::string HelpText(std::string_view dialogLines) {
    std::string text =
        "Usage: qvplc-desktop [FILE.dxf] [--commands SCRIPT] [--screenshot OUT.png] [--quit]\n"
        "\n"
        "Opens FILE.dxf (or a new drawing) in a window with the drawing view and a command\n"
        "line. Type a command there and press Enter:\n"
        "  PLCRENDAL        open the drawing dialog: pick a module, mark its terminals, draw\n"
        "  PlcDataLibEdit   edit the component library\n"
        "  RENDALFULL       draw the module the dialog asked for in one piece (sent by it)\n"
        "  DIVRENDAL        draw it in pieces between picked points (sent by it)\n"
        "  NEW, OPEN [FILE], SAVE, SAVEAS FILE, QUIT, ZOOM E (zoom to the whole drawing)\n"
        "Up and Down recall earlier lines. When a command asks for a point, click in the\n"
        "drawing, or type X,Y and Enter; Esc cancels.\n"
        "\n"
        "Mouse: the wheel zooms at the cursor, the middle button (or Space with the left\n"
        "button) pans, a left click picks a point. The status bar shows the cursor's world\n"
        "coordinates.\n"
        "\n"
        "Options:\n"
        "  --commands SCRIPT    type each line of SCRIPT into the command line in turn;\n"
        "                       empty lines and lines starting with # are skipped\n"
        "  --screenshot OUT.png save a picture of the main window after the last line\n"
        "  --quit               leave when the script is done; the exit code is 1 when a\n"
        "                       line failed (the message names the line)\n"
        "  --help               show this text\n"
        "\n"
        "Script lines are what a user types: command names, answers, points X,Y. Besides:\n"
        "  answer yes|no|ok|cancel   answer the next message box with that button (without\n"
        "                            one, a script's message box gets Cancel or No)\n"
        "  wait                      let the window process its events\n";
    if (!dialogLines.empty()) {
        text += "Lines starting with \"dialog\" act on the open dialog:\n";
        text += dialogLines;
        if (!text.ends_with('\n')) {
            text += '\n';
        }
    }
    text +=
        "\n"
        "Environment: QVPLC_PLUGIN names the plug-in library to load (by default the\n"
        "qvplc_plugin.so beside the program or in its lib/qvplc); QVPLC_DESKTOP_SETTINGS names\n"
        "the settings file (recent files, DefaultFormatForSave; by default\n"
        "$XDG_CONFIG_HOME/qvplc/desktop.conf).\n"
        "\n"
        "Example:\n"
        "  qvplc-desktop --commands draw.txt --screenshot shot.png --quit\n";
    return text;
}

}  // namespace desktop
