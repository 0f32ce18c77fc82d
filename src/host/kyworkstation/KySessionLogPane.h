#pragma once

#include <QtWidgets/QWidget>

/// The session log: its lines since the start, with a search, and the file that keeps them. Made by the main
/// window.
class KySessionLogPane : public QWidget
{
    Q_OBJECT

public:
    explicit KySessionLogPane(QWidget* inParent);

private:
    QWidget* makeFileBar(const QString& inFile);
};
