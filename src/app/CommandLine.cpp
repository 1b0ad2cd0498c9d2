#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <filesystem>

namespace quillet {

namespace {

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 8.0;
constexpr int kWrongUsage = 2;

// The parser works on text, but arguments are bytes that need not be text in any encoding. They
// travel through it as Latin-1, which keeps every byte.
QStringList textOf(std::span<char* const> arguments) {
    QStringList words;
    for (const char* argument : arguments) {
        words.append(QString::fromLatin1(argument));
    }
    return words;
}

std::string bytesOf(const QString& text) {
    return text.toLatin1().toStdString();
}

// Why the arguments cannot be followed.
struct UsageError {
    QString text;
};

struct Options {
    QCommandLineOption container{QStringLiteral("container"),
                                 QStringLiteral("Read the shared container <DIR>."),
                                 QStringLiteral("DIR")};
    QCommandLineOption bundleIdentifier{
        QStringLiteral("bundle-identifier"),
        QStringLiteral("Run as the bundle <ID>; it chooses the data folder and the host."),
        QStringLiteral("ID")};
    QCommandLineOption dark{QStringLiteral("dark"), QStringLiteral("Take the dark look.")};
    QCommandLineOption light{QStringLiteral("light"), QStringLiteral("Take the light look.")};
    QCommandLineOption segment{
        QStringLiteral("segment"),
        QStringLiteral("list, snapshot: show segment <N> (0 all, 1 Inbox, 2 To Do, 3 Memo)."),
        QStringLiteral("N")};
    QCommandLineOption json{QStringLiteral("json"), QStringLiteral("list: print JSON.")};
    QCommandLineOption scale{QStringLiteral("scale"),
                             QStringLiteral("snapshot: draw <F> device pixels a point."),
                             QStringLiteral("F")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Print this text.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Print the version.")};
};

void describe(QCommandLineParser& parser, const Options& options) {
    parser.setApplicationDescription(
        QStringLiteral("Shows the newest messages of the mail application in a panel."));
    parser.addOptions({options.container,
                       options.bundleIdentifier,
                       options.dark,
                       options.light,
                       options.segment,
                       options.json,
                       options.scale,
                       options.help,
                       options.version});
    parser.addPositionalArgument(
        QStringLiteral("command"),
        QStringLiteral("list prints the rows that the widget shows, snapshot draws it into "
                       "FILE.png; without a command the panel comes up."),
        QStringLiteral("[list | snapshot FILE.png]"));
}

// The toolkit's text, but with the program's name whatever it was started as.
std::string helpOf(const QCommandLineParser& parser) {
    const QString text = parser.helpText();
    return "Usage: quillet-today" +
           text.mid(text.indexOf(QLatin1String(" [options]"))).toStdString();
}

std::int64_t segmentOf(const QString& text) {
    bool valid = false;
    const qlonglong segment = text.toLongLong(&valid);
    if (!valid) {
        throw UsageError{QStringLiteral("--segment takes a whole number, not \"%1\"").arg(text)};
    }
    return segment;
}

double scaleOf(const QString& text) {
    bool valid = false;
    const double scale = text.toDouble(&valid);
    if (!valid || !(scale >= kSmallestScale && scale <= kLargestScale)) {
        throw UsageError{QStringLiteral("--scale takes a number from %1 to %2, not \"%3\"")
                             .arg(kSmallestScale)
                             .arg(kLargestScale)
                             .arg(text)};
    }
    return scale;
}

// An absolute path, so that it means the same whatever the working folder; empty stays empty.
std::string containerOf(const QString& path) {
    if (path.isEmpty()) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(bytesOf(path), error);
    if (error) {
        throw UsageError{
            QStringLiteral("--container needs an absolute path where there is no working folder")};
    }
    return absolute.string();
}

void readCommand(const QStringList& words, CommandLine& line) {
    if (words.isEmpty()) {
        return;
    }
    const QString& command = words.first();
    if (command == QLatin1String("list")) {
        line.command = CommandLine::Command::List;
    } else if (command == QLatin1String("snapshot")) {
        line.command = CommandLine::Command::Snapshot;
    } else {
        throw UsageError{QStringLiteral("there is no command \"%1\"").arg(command)};
    }
    const qsizetype wanted = line.command == CommandLine::Command::Snapshot ? 2 : 1;
    if (words.size() < wanted) {
        throw UsageError{QStringLiteral("snapshot needs the name of the file to write")};
    }
    if (words.size() > wanted) {
        throw UsageError{QStringLiteral("\"%1\" is one argument too many").arg(words[wanted])};
    }
    if (wanted > 1) {
        line.picture = bytesOf(words[1]);
    }
}

void readOptions(const QCommandLineParser& parser, const Options& options, CommandLine& line) {
    if (parser.isSet(options.container)) {
        line.container = containerOf(parser.value(options.container));
    }
    if (parser.isSet(options.bundleIdentifier)) {
        line.bundleIdentifier = bytesOf(parser.value(options.bundleIdentifier));
    }
    if (parser.isSet(options.dark) || parser.isSet(options.light)) {
        line.look = parser.isSet(options.dark) ? platform::Look::Dark : platform::Look::Light;
    }
    if (parser.isSet(options.segment)) {
        line.segment = segmentOf(parser.value(options.segment));
    }
    if (parser.isSet(options.scale)) {
        line.scale = scaleOf(parser.value(options.scale));
    }
    line.json = parser.isSet(options.json);
}

// Options that the command has no use for are refused rather than ignored.
void checkOptions(const QCommandLineParser& parser,
                  const Options& options,
                  const CommandLine& line) {
    const bool list = line.command == CommandLine::Command::List;
    const bool snapshot = line.command == CommandLine::Command::Snapshot;
    if (parser.isSet(options.dark) && parser.isSet(options.light)) {
        throw UsageError{QStringLiteral("choose one of --dark and --light")};
    }
    if (line.look && list) {
        throw UsageError{QStringLiteral("--dark and --light go with the panel and snapshot")};
    }
    if (line.json && !list) {
        throw UsageError{QStringLiteral("--json goes with list")};
    }
    if (parser.isSet(options.scale) && !snapshot) {
        throw UsageError{QStringLiteral("--scale goes with snapshot")};
    }
    if (line.segment && !list && !snapshot) {
        throw UsageError{QStringLiteral("--segment goes with list and snapshot")};
    }
}

}  // namespace

std::variant<CommandLine, EarlyExit> readCommandLine(std::span<char* const> arguments) {
    QCommandLineParser parser;
    const Options options;
    describe(parser, options);
    try {
        if (!parser.parse(textOf(arguments))) {
            throw UsageError{parser.errorText()};
        }
        if (parser.isSet(options.help)) {
            return EarlyExit{0, helpOf(parser)};
        }
        if (parser.isSet(options.version)) {
            return EarlyExit{0, "quillet-today " QUILLET_VERSION "\n"};
        }
        CommandLine line;
        readCommand(parser.positionalArguments(), line);
        readOptions(parser, options, line);
        checkOptions(parser, options, line);
        return line;
    } catch (const UsageError& error) {
        return EarlyExit{
            kWrongUsage,
            "quillet-today: " + bytesOf(error.text) + "\nTry \"quillet-today --help\".\n"};
    }
}

}  // namespace quillet
