#include "KyRunPrompt.h"

#include "KyRunOutput.h"

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSocketNotifier>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <editline/readline.h>
#include <unistd.h>

namespace {

constexpr int sMostHistory = 1000;

KyRunPrompt* sPrompt = nullptr;

/// The names on an object and its prototypes. The way to the object goes over plain values only, so that no
/// script's getter runs.
const char* const sNames = R"(
(function(global) {
    function value(object, name) {
        for (var at = Object(object); at !== null; at = Object.getPrototypeOf(at)) {
            var found = Object.getOwnPropertyDescriptor(at, name);
            if (found)
                return found.value;
        }
    }
    return function(path) {
        var object = path.reduce(value, global), names = Object.create(null);
        if (object === undefined || object === null)
            return [];
        for (var at = Object(object); at !== null; at = Object.getPrototypeOf(at))
            Object.getOwnPropertyNames(at).forEach(function(name) { names[name] = true; });
        return Object.keys(names).filter(function(name) { return /^(?!__)[A-Za-z_$][\w$]*$/.test(name); }).sort();
    };
})(this))";

char* copyOf(const QString& inText)
{
    return strdup(inText.toUtf8().constData());
}

/// The form that the line editor asks for: what all have in common, then all, then null.
char** complete(const char* inWord, int, int)
{
    rl_attempted_completion_over = 1;
    const QStringList words = sPrompt->completions(QString::fromUtf8(inWord));
    if (words.isEmpty())
        return nullptr;
    QString common = words.first();
    for (const QString& word : words) {
        while (!word.startsWith(common))
            common.chop(1);
    }
    auto** all = static_cast<char**>(std::calloc(size_t(words.size()) + 2, sizeof(char*)));
    all[0] = copyOf(common);
    for (qsizetype i = 0; words.size() > 1 && i < words.size(); ++i)
        all[i + 1] = copyOf(words.at(i));
    return all;
}

} // namespace

KyRunPrompt::KyRunPrompt(KyScriptAbstractEngine& inFacade, const Run& inRun, const QString& inHistoryFile)
    : mFacade(inFacade)
    , mRun(inRun)
    , mHistoryFile(QFile::encodeName(inHistoryFile))
    , mNames(inFacade.jsEngine(true)->QJSEngine::evaluate(QString::fromLatin1(sNames)))
{
    sPrompt = this;
}

KyRunPrompt::~KyRunPrompt()
{
    sPrompt = nullptr;
}

int KyRunPrompt::exec()
{
    static char name[] = "kyrun";
    static char breaks[] = " \t\n\"'`@><=;|&{}()[]+-*/%!?:,^~";
    rl_readline_name = name;
    rl_basic_word_break_characters = breaks;
    rl_completer_word_break_characters = breaks;
    rl_completion_append_character = '\0';
    rl_attempted_completion_function = complete;
    using_history();
    stifle_history(sMostHistory);
    if (!mHistoryFile.isEmpty())
        read_history(mHistoryFile.constData());

    install();
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    connect(&input, &QSocketNotifier::activated, this, [this, &input] {
        // What a line runs may wait in a loop of its own, in which further lines are not for this one.
        input.setEnabled(false);
        rl_callback_read_char();
        input.setEnabled(!mIsAtEnd);
    });
    const int status = QCoreApplication::exec();
    rl_callback_handler_remove();
    if (!mHistoryFile.isEmpty() && QDir().mkpath(QFileInfo(QFile::decodeName(mHistoryFile)).path()))
        write_history(mHistoryFile.constData());
    return status;
}

void KyRunPrompt::install()
{
    rl_callback_handler_install(mText.isEmpty() ? "> " : "... ", [](char* line) {
        sPrompt->readLine(line);
        std::free(line);
    });
}

void KyRunPrompt::readLine(const char* inLine)
{
    if (!inLine) {
        mIsAtEnd = true;
        KyRunOutput::writeLine(QString());
        QCoreApplication::exit(0);
        return;
    }
    if (*inLine)
        add_history(inLine);
    mText += QString::fromUtf8(inLine) + QLatin1Char('\n');
    if (!isOpen(mText))
        runText();
    if (!mIsAtEnd)
        install();
}

void KyRunPrompt::runText()
{
    const QString text = std::exchange(mText, QString());
    if (text.trimmed().isEmpty())
        return;
    mRun(text, QStringLiteral("line%1").arg(++mCount));
    if (mFacade.jsEngine(false))
        return;
    mIsAtEnd = true;
    QCoreApplication::exit(1);
}

bool KyRunPrompt::isOpen(const QString& inText)
{
    int depth = 0;
    for (qsizetype i = 0; i < inText.size(); ++i) {
        const QChar c = inText.at(i);
        const QStringView rest = QStringView(inText).mid(i);
        if (rest.startsWith(QLatin1String("//"))) {
            i = inText.indexOf(QLatin1Char('\n'), i);
        } else if (rest.startsWith(QLatin1String("/*"))) {
            i = inText.indexOf(QLatin1String("*/"), i + 2);
            if (i < 0)
                return true;
            ++i;
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'') || c == QLatin1Char('`')) {
            for (++i; i < inText.size() && inText.at(i) != c; ++i) {
                if (inText.at(i) == QLatin1Char('\n') && c != QLatin1Char('`'))
                    break;
                i += inText.at(i) == QLatin1Char('\\') ? 1 : 0;
            }
            if (i >= inText.size())
                return c == QLatin1Char('`');
        } else {
            depth += QLatin1String("([{").contains(c) ? 1 : QLatin1String(")]}").contains(c) ? -1 : 0;
        }
        if (i < 0)
            break;
    }
    return depth > 0;
}

QStringList KyRunPrompt::completions(const QString& inWord) const
{
    QStringList path = inWord.split(QLatin1Char('.'));
    const QString begin = path.takeLast();
    KyScriptEngine* const engine = mFacade.jsEngine(false);
    if (!engine)
        return {};
    QJSValue steps = engine->newArray(quint32(path.size()));
    for (qsizetype i = 0; i < path.size(); ++i)
        steps.setProperty(quint32(i), path.at(i));
    const QJSValue names = mNames.call({steps});
    QStringList found;
    for (const QString& name : names.toVariant().toStringList()) {
        if (name.startsWith(begin))
            found.append((path + QStringList(name)).join(QLatin1Char('.')));
    }
    return found;
}
