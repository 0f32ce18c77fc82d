#include "KyToolFiles.h"

#include <kyscript/KyScriptTool.h>

#include <kybase/KyToolRegistry.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <memory>

namespace {

/// Hears of files that cannot be used: a line that says so, and the place behind it.
class FileErrors final : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override
    {
        const QString line = QString::fromStdString(RnLogFile::toUtf8(inRecord.text)).trimmed();
        const bool isError =
            line.startsWith(QLatin1String("Tool Configuration ")) && line.endsWith(QLatin1String(" ERROR:"));
        if (isError || !text.isEmpty())
            text += (text.isEmpty() ? QString() : QStringLiteral(" ")) + line;
    }

    QString text;
};

} // namespace

QString KyToolFiles::load(const QString& inFile)
{
    const auto errors = std::make_shared<FileErrors>();
    getTheLogInstance().addSink(errors, 2);
    const std::size_t before = KyToolRegistry::tools().size();
    const QString icons = QFileInfo(inFile).dir().filePath(QStringLiteral("icons"));
    KyScriptTool::loadTools(QFile::encodeName(inFile).constData(), QFile::encodeName(icons).constData());
    getTheLogInstance().removeSink(errors.get());

    if (errors->text.isEmpty() && KyToolRegistry::tools().size() == before)
        getTheLogInstance().tracef(2, "Tools", "There is no tool in %s",
                                   QFile::encodeName(inFile).constData());
    return errors->text;
}

QStringList KyToolFiles::in(const QString& inFolder)
{
    QStringList files;
    if (inFolder.isEmpty())
        return files;
    const QDir folder(inFolder);
    for (const QString& name : folder.entryList({QStringLiteral("*.xml")}, QDir::Files, QDir::Name))
        files.append(folder.filePath(name));
    return files;
}

QString KyToolFiles::installedFolder()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QStringLiteral("/../share/kyworkstation/tools"));
}
