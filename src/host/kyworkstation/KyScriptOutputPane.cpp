#include "KyScriptOutputPane.h"

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <QtCore/QFile>
#include <QtCore/QStringDecoder>
#include <QtGui/QAbstractTextDocumentLayout>
#include <QtGui/QFontDatabase>
#include <QtGui/QTextBlock>
#include <QtGui/QTextDocument>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTextEdit>

#include <algorithm>

namespace {

/// Text for QTextEdit::append() that is shown as it is.
QString plain(const QString& inText)
{
    return inText.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>"));
}

/// While it lives, scripts of an engine print to another widget.
class PrintRedirection
{
public:
    PrintRedirection(KyScriptInterface& ioEngine, QTextEdit& ioTarget)
        : mEngine(&ioEngine)
        , mTarget(&ioTarget)
        , mBefore(ioEngine.printOutput())
    {
        if (mBefore != mTarget)
            mEngine->redirectPrintOutput(mTarget);
    }
    /// A console that the run has opened keeps what it has taken.
    ~PrintRedirection()
    {
        if (mEngine && mBefore && mBefore != mTarget && mEngine->printOutput() == mTarget)
            mEngine->redirectPrintOutput(mBefore);
    }
    Q_DISABLE_COPY_MOVE(PrintRedirection)

private:
    const QPointer<KyScriptInterface> mEngine;
    const QPointer<QTextEdit> mTarget;
    const QPointer<QTextEdit> mBefore;
};

/// The first line of a document that stays, so that it keeps its bounds; 0 as long as it does.
int firstLineToKeep(const QTextDocument& inDocument)
{
    constexpr int maxLines = KyScriptOutputPane::MaxLines;
    constexpr int maxCharacters = KyScriptOutputPane::MaxCharacters;
    const int lines = inDocument.blockCount();
    const int characters = inDocument.characterCount();
    int first = lines > maxLines + maxLines / 2 ? lines - maxLines : 0;
    if (characters > maxCharacters + maxCharacters / 2)
        first = std::max(first, inDocument.findBlock(characters - maxCharacters).blockNumber());
    return first;
}

} // namespace

KyScriptOutputPane::KyScriptOutputPane(QWidget* inParent)
    : QWidget(inParent)
    , mText(new QTextEdit(this))
{
    mText->setObjectName(QStringLiteral("scriptOutputText"));
    mText->setReadOnly(true);
    mText->setUndoRedoEnabled(false);
    mText->setAccessibleName(tr("Script output"));
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // A font that is given in pixels has no points.
    if (font().pointSize() > 0)
        fixed.setPointSize(font().pointSize());
    mText->setFont(fixed);
    connect(mText->document(), &QTextDocument::contentsChanged, this, &KyScriptOutputPane::trim);
    auto* clear = new QPushButton(tr("Cle&ar"), this);
    clear->setObjectName(QStringLiteral("clearScriptOutput"));
    clear->setToolTip(tr("Empty the script output"));
    connect(clear, &QPushButton::clicked, mText, &QTextEdit::clear);
    auto* all = new QHBoxLayout(this);
    all->setContentsMargins(4, 4, 4, 4);
    all->addWidget(mText, 1);
    all->addWidget(clear, 0, Qt::AlignTop);
}

void KyScriptOutputPane::run(const QString& inFile)
{
    QFile file(inFile);
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString source = file.open(QIODevice::ReadOnly) ? decoder(file.readAll()) : QString();
    if (file.error() != QFileDevice::NoError || decoder.hasError()) {
        const QString reason = decoder.hasError() ? tr("it is not UTF-8") : file.errorString();
        mText->append(plain(tr("Cannot read the script %1: %2").arg(inFile, reason)));
        return;
    }
    Q_EMIT starting(inFile);
    mText->append(plain(tr("Running %1").arg(inFile)));
    KyScriptInterface& engine = KyScriptInterface::getInstance(QString());
    const PrintRedirection redirection(engine, *mText);
    showResult(engine, KyScriptAbstractInterface::getInstance(QString()).runScript(
                           KyScriptProgram(source, inFile, 1), false, false, true));
}

void KyScriptOutputPane::showResult(const KyScriptInterface& inEngine, const QJSValue& inValue)
{
    if (inValue.isError())
        mText->append(plain(inEngine.errorMessage(inValue, QString(), nullptr)));
    else if (!inValue.isUndefined())
        mText->append(plain(inValue.toString()));
}

/// A reader who has scrolled up keeps the lines that he reads, as long as they are there.
void KyScriptOutputPane::trim()
{
    QTextDocument& document = *mText->document();
    const int first = firstLineToKeep(document);
    if (first == 0)
        return;
    QScrollBar& bar = *mText->verticalScrollBar();
    const bool isAtEnd = bar.value() >= bar.maximum();
    const QTextBlock kept = document.findBlockByNumber(first);
    const QAbstractTextDocumentLayout& layout = *document.documentLayout();
    const int removedHeight =
        qRound(layout.blockBoundingRect(kept).top() - layout.blockBoundingRect(document.firstBlock()).top());
    const int value = bar.value() - removedHeight;

    QTextCursor oldest(&document);
    oldest.setPosition(kept.position(), QTextCursor::KeepAnchor);
    oldest.removeSelectedText();
    bar.setValue(isAtEnd ? bar.maximum() : std::max(value, 0));
}
