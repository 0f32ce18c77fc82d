#include "KyScriptOutputPane.h"

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <QtCore/QFile>
#include <QtCore/QStringDecoder>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>

namespace {

/// Text for QTextEdit::append() that is shown as it is.
QString plain(const QString& inText)
{
    return inText.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>"));
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
    auto* clear = new QPushButton(tr("Cle&ar"), this);
    clear->setObjectName(QStringLiteral("clearScriptOutput"));
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
    KyScriptInterface& engine = KyScriptInterface::getInstance(QString());
    if (engine.globalObject().property(QStringLiteral("print")).isUndefined())
        engine.redirectPrintOutput(mText);
    mText->append(plain(tr("Running %1").arg(inFile)));
    const QJSValue value = KyScriptAbstractInterface::getInstance(QString()).runScript(
        KyScriptProgram(source, inFile, 1), false, false, true);
    if (value.isError())
        mText->append(plain(engine.errorMessage(value, QString(), nullptr)));
    else if (!value.isUndefined())
        mText->append(plain(value.toString()));
}
