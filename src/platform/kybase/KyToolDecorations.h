#pragma once

#include <QIcon>
#include <QString>

#include <map>
#include <string>

/// What tools look like: icon, label, tool tip and group for each decoration key.
///
/// A decoration key is any text; it is compared exactly, and goes in Latin-1 where it is a char pointer. A
/// key needs no tool, and a tool needs no row here: what is unknown has an empty icon and empty texts.
///
/// The path of an icon is the name of a file, or of an icon of the application below ":icons/". The name
/// "OrvaneLogo" there is the application's own mark, which stands in for an icon that was not found. A path
/// that leads to no picture, or to a broken one, gives an empty icon, so that a button shows its label.
///
/// Owned by KyApplication. GUI thread only.
class KyToolDecorations
{
public:
    KyToolDecorations();
    virtual ~KyToolDecorations();
    KyToolDecorations(const KyToolDecorations&) = delete;
    KyToolDecorations& operator=(const KyToolDecorations&) = delete;

    /// The icon, whose state QIcon::On shows an active tool.
    virtual QIcon icon(const char* inKey);
    /// The label of an active tool, if \a inActive is set and there is one, else the label.
    virtual QString label(const char* inKey, bool inActive);
    virtual QString toolTip(const char* inKey);

    /// Sets the whole row of \a inKey. Tools of one group stand together; the group may be empty.
    virtual void registerDecoration(const QString& inKey, const QString& inGroup, const QString& inIcon,
                                    const QString& inIconActive, const QString& inToolTip,
                                    const QString& inLabel, const QString& inLabelActive);
    /// Sets the path of the icon for both states. An empty one takes the icon away.
    virtual void setIcon(const QString& inKey, const QString& inIconPath);
    /// Sets the texts. An empty \a inActiveText lets an active tool have the \a inMenuText as its label.
    virtual void setTexts(const QString& inKey, const QString& inToolTip, const QString& inMenuText,
                          const QString& inActiveText);

    QString group(const char* inKey) const { return row(inKey).group; }
    /// The paths as they were set.
    QString iconPath(const char* inKey) const { return row(inKey).icon; }
    QString activeIconPath(const char* inKey) const { return row(inKey).iconActive; }

private:
    struct Row
    {
        QString group;
        QString icon;
        QString iconActive;
        QString toolTip;
        QString label;
        QString labelActive;
        QIcon image; ///< What the paths have given.
        bool isImageRead = false;
    };

    const Row& row(const char* inKey) const;
    Row& rowFor(const QString& inKey);

    std::map<std::string, Row, std::less<>> mRows;
};
