#include "KyToolDecorations.h"

#include <QFileInfo>

namespace {

/// Pictures that can be seen: the sizes at which one is asked for one.
constexpr QSize TestedSize(32, 32);

QString fileOf(const QString& inPath)
{
    return QFileInfo::exists(inPath) ? inPath : QStringLiteral(":icons/") + inPath;
}

/// Empty when the file is no picture: an icon from its name alone would be a blank one.
QIcon readIcon(const QString& inPath)
{
    if (inPath.isEmpty())
        return QIcon();
    const QIcon icon(fileOf(inPath));
    return icon.pixmap(TestedSize).isNull() ? QIcon() : icon;
}

QIcon readIcon(const QString& inPath, const QString& inActivePath)
{
    QIcon icon = readIcon(inPath);
    if (!readIcon(inActivePath).isNull())
        icon.addFile(fileOf(inActivePath), QSize(), QIcon::Normal, QIcon::On);
    return icon;
}

} // namespace

KyToolDecorations::KyToolDecorations() = default;

KyToolDecorations::~KyToolDecorations() = default;

const KyToolDecorations::Row& KyToolDecorations::row(const char* inKey) const
{
    static const Row empty;
    const auto found = mRows.find(inKey ? std::string_view(inKey) : std::string_view());
    return found == mRows.end() ? empty : found->second;
}

KyToolDecorations::Row& KyToolDecorations::rowFor(const QString& inKey)
{
    return mRows[inKey.toLatin1().toStdString()];
}

QIcon KyToolDecorations::icon(const char* inKey)
{
    const auto found = mRows.find(inKey ? std::string_view(inKey) : std::string_view());
    if (found == mRows.end())
        return QIcon();
    Row& present = found->second;
    if (!present.isImageRead)
        present.image = readIcon(present.icon, present.iconActive);
    present.isImageRead = true;
    return present.image;
}

QString KyToolDecorations::label(const char* inKey, bool inActive)
{
    const Row& present = row(inKey);
    return inActive && !present.labelActive.isEmpty() ? present.labelActive : present.label;
}

QString KyToolDecorations::toolTip(const char* inKey)
{
    return row(inKey).toolTip;
}

void KyToolDecorations::registerDecoration(const QString& inKey, const QString& inGroup,
                                           const QString& inIcon, const QString& inIconActive,
                                           const QString& inToolTip, const QString& inLabel,
                                           const QString& inLabelActive)
{
    rowFor(inKey) = {inGroup, inIcon, inIconActive, inToolTip, inLabel, inLabelActive, QIcon(), false};
}

void KyToolDecorations::setIcon(const QString& inKey, const QString& inIconPath)
{
    Row& changed = rowFor(inKey);
    changed.icon = inIconPath;
    changed.iconActive.clear();
    changed.isImageRead = false;
}

void KyToolDecorations::setTexts(const QString& inKey, const QString& inToolTip, const QString& inMenuText,
                                 const QString& inActiveText)
{
    Row& changed = rowFor(inKey);
    changed.toolTip = inToolTip;
    changed.label = inMenuText;
    changed.labelActive = inActiveText;
}
