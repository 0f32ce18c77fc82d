#pragma once

#include <QtWidgets/QPlainTextEdit>

/// A plain-text editor with line numbers at its left and a highlight on the current line.
///
/// It has no handling of keys of its own: indentation and the like are the business of event filters on it.
/// Lines count from 1. Where text is light, as in dark colours, that of the current line is black, so that it
/// can be read on the highlight. A read-only editor shows no highlight, from the next move of its cursor on.
class CodeEditor : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit CodeEditor(QWidget* parent = nullptr);

    /// In pixels: enough for the digits of the last line's number, and 3.
    int lineNumberAreaWidth();
    /// Paints the numbers of the lines on view; for the gutter.
    void lineNumberAreaPaintEvent(QPaintEvent* event);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private Q_SLOTS:
    void updateLineNumberAreaWidth(int newBlockCount);
    void highlightCurrentLine();
    void updateLineNumberArea(QRect rect, int dy);

private:
    QWidget* mLineNumberArea;
};

/// The gutter of a CodeEditor, made by it as its child.
class LineNumberArea : public QWidget
{
    Q_OBJECT

public:
    explicit LineNumberArea(CodeEditor* inEditor);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    CodeEditor* const mEditor;
};
