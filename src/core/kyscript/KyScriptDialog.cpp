#include "KyScriptDialog.h"

#include "KyScriptDialogButtons.h"
#include "KyScriptDialogPrivate.h"
#include "KyScriptEngine.h"
#include "KyScriptKeeper.h"
#include "KyScriptLiveDialogs.h"
#include "KyScriptLog.h"
#include "KyScriptVariant.h"

#include <jxbase/JxAnimatedProgressIcon.h>
#include <kybase/KyGUISizeManager.h>
#include <kybase/KyMonitorManager.h>
#include <kybase/KyNotifiable.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QButtonGroup>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyle>

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* DefaultContext = "KyScriptDialog";
constexpr const char* DefaultButton = "OK";

/// How much taller than a line of its text the icon of the indicator is.
constexpr int IconSurplus = 6;

bool isType(const QString& inType, const char* inLiteral)
{
    return inType.compare(QLatin1String(inLiteral), Qt::CaseInsensitive) == 0;
}

/// A line of the indicator: a text that has too little room ends in an ellipsis.
class StatusLabel final : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* inEvent) override
    {
        const bool isPlain = !text().isEmpty() && !Qt::mightBeRichText(text());
        if (!isPlain || fontMetrics().horizontalAdvance(text()) <= contentsRect().width())
            return QLabel::paintEvent(inEvent);
        QPainter painter(this);
        style()->drawItemText(&painter, contentsRect(), int(alignment()), palette(), isEnabled(),
                              fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()),
                              foregroundRole());
    }
};

/// A box that leaves its buttons as they are when it is shown, where Qt's makes the first one the default.
class ButtonBox final : public QDialogButtonBox
{
public:
    using QDialogButtonBox::QDialogButtonBox;

protected:
    bool event(QEvent* inEvent) override
    {
        return inEvent->type() == QEvent::Show ? QWidget::event(inEvent) : QDialogButtonBox::event(inEvent);
    }
};

} // namespace

StatusIndicator::StatusIndicator(QWidget* inParent)
    : QWidget(inParent)
    , mFront(new StatusLabel(this))
    , mBack(new StatusLabel(this))
{
    mFront->setObjectName(QStringLiteral("statusFront"));
    mBack->setObjectName(QStringLiteral("statusBack"));
    // A long text must not make the window wider each time that it changes.
    mBack->setMinimumWidth(1);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mFront);
    layout->addWidget(mBack);
    hide();
}

StatusIndicator::~StatusIndicator()
{
    stop(QString());
}

void StatusIndicator::start(const QString& inStatus)
{
    mFront->setMinimumWidth(0);
    show();
    JxAnimatedProgressIcon::setIconTo(
        this, [this](const QIcon& icon) { showIcon(icon); }, false);
    mBack->setText(inStatus);
    tell(inStatus);
}

void StatusIndicator::stop(const QString& inStatus)
{
    JxAnimatedProgressIcon::removeIconFrom(this, true);
    mFront->setMinimumWidth(1);
    mFront->setText(inStatus);
    mBack->clear();
    tell(inStatus);
    if (inStatus.isEmpty())
        hide();
}

bool StatusIndicator::isBusy() const
{
    return !mFront->pixmap(Qt::ReturnByValue).isNull();
}

void StatusIndicator::showIcon(const QIcon& inIcon)
{
    const int extent = QFontMetrics(font()).height() + IconSurplus;
    mFront->setPixmap(inIcon.pixmap(extent, QIcon::Normal, QIcon::Off));
}

void StatusIndicator::tell(const QString& inStatus)
{
    setAccessibleName(KyScriptDialog::plainText(inStatus));
    setToolTip(inStatus);
}

namespace {

/// The indicator for screen readers: one status bar, whose name is the status, in place of two labels.
class AccessibleIndicator final : public QAccessibleWidget
{
public:
    explicit AccessibleIndicator(StatusIndicator* inIndicator)
        : QAccessibleWidget(inIndicator, QAccessible::StatusBar)
    {}

    static QAccessibleInterface* make(const QString&, QObject* inObject)
    {
        auto* indicator = dynamic_cast<StatusIndicator*>(inObject);
        return indicator ? new AccessibleIndicator(indicator) : nullptr;
    }

    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = static_cast<const StatusIndicator*>(object())->isBusy();
        return state;
    }
};

} // namespace

KyScriptDialog::Private::Private(KyScriptDialog* inDialog)
    : label(new QLabel(inDialog))
    , edit(new QTextEdit(inDialog))
    , lineEdit(new QLineEdit(inDialog))
    , textBrowser(new QTextBrowser(inDialog))
    , group(new QButtonGroup(inDialog))
    , box(new ButtonBox(inDialog))
    , indicator(new StatusIndicator(inDialog))
    , buttons(new KyScriptDialogButtons(inDialog, box, group))
    , keeper(new KyScriptKeeper(inDialog))
{
    label->setObjectName(QStringLiteral("KyScriptDialog_label"));
    edit->setObjectName(QStringLiteral("KyScriptDialog_edit"));
    lineEdit->setObjectName(QStringLiteral("KyScriptDialog_lineEdit"));
    textBrowser->setObjectName(QStringLiteral("KyScriptDialog_textBrowser"));
    group->setObjectName(QStringLiteral("KyScriptDialog_group"));
    box->setObjectName(QStringLiteral("KyScriptDialog_box"));
    indicator->setObjectName(QStringLiteral("KyScriptDialog_indicator"));
    static const bool isTold = (QAccessible::installFactory(&AccessibleIndicator::make), true);
    Q_UNUSED(isTold)
}

void KyScriptDialog::Private::scroll(bool inToBottom) const
{
    QScrollBar* bar = field()->verticalScrollBar();
    if (!inToBottom)
        return bar->setValue(0);
    // The size ends the layout of a long text, which otherwise goes on in the background.
    const int height = int(std::ceil(field()->document()->size().height()));
    bar->setMaximum(std::max(bar->maximum(), height - field()->viewport()->height()));
    bar->setValue(bar->maximum());
}

KyScriptDialog::KyScriptDialog(QVariantMap config)
    : JxDialog(KyMonitorManager::parentForGlobalNonModalWidget(QString()))
    , KyNotifiableContextSensitive(nullptr)
    , d(std::make_unique<Private>(this))
{
    setWindowFlags(windowFlags() | Qt::Tool);
    build();
    readConfig(config);
    KyScriptLiveDialogs::enter(this);
}

KyScriptDialog::KyScriptDialog()
    : KyScriptDialog(QVariantMap())
{}

KyScriptDialog::KyScriptDialog(const QJSValue& config)
    : KyScriptDialog(KyScriptVariant::cut(config).toMap())
{}

KyScriptDialog::~KyScriptDialog()
{
    KyScriptLiveDialogs::leave(this);
    log(QStringLiteral("Destroyed"));
}

void KyScriptDialog::build()
{
    d->label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    d->label->setWordWrap(true);
    d->edit->setTabChangesFocus(true);
    setTabOrder(d->edit, d->textBrowser);
    setTabOrder(d->textBrowser, d->lineEdit);
    setTabOrder(d->lineEdit, d->box);

    auto* column = new QVBoxLayout(this);
    column->addWidget(d->label);
    column->addWidget(d->edit);
    column->addWidget(d->textBrowser);
    column->addWidget(d->lineEdit);
    auto* row = new QHBoxLayout;
    row->addWidget(d->indicator);
    row->addItem(new QSpacerItem(40, 20, QSizePolicy::Expanding, QSizePolicy::Minimum));
    row->addWidget(d->box);
    column->addLayout(row);

    connect(d->buttons, &KyScriptDialogButtons::chosen, this, &KyScriptDialog::answer);
    connect(this, &QDialog::finished, this, &KyScriptDialog::finish);
    connect(d->lineEdit, &QLineEdit::returnPressed, this,
            [this] { answer(EnterPressed, -1, QStringLiteral("User pressed enter in the line edit")); });
    connect(d->textBrowser, &QTextBrowser::anchorClicked, this, [this](const QUrl& url) {
        const KyScriptKeeper::Scope scope(d->keeper);
        Q_EMIT linkClicked(url.toString());
    });
    connect(d->textBrowser, &QTextBrowser::highlighted, this, [this](const QUrl& url) {
        const KyScriptKeeper::Scope scope(d->keeper);
        Q_EMIT linkHovered(url.toString());
    });
}

void KyScriptDialog::readConfig(const QVariantMap& inConfig)
{
    const QVariantList buttons = KyScriptVariant::listOf(inConfig.value(QStringLiteral("buttons")));
    const QVariantList size = KyScriptVariant::listOf(inConfig.value(QStringLiteral("initialSize")));
    const bool hasField = inConfig.contains(QStringLiteral("fieldText"));
    d->useTextBrowser = inConfig.value(QStringLiteral("useTextBrowser")).toBool();
    d->autoClose = inConfig.value(QStringLiteral("autoClose")).toBool();
    d->manuallyCloseDialog = inConfig.value(QStringLiteral("manuallyCloseDialog")).toBool();
    d->context = inConfig.value(QStringLiteral("context")).toString();

    d->textBrowser->setVisible(hasField && d->useTextBrowser);
    d->edit->setVisible(hasField && !d->useTextBrowser);
    d->textBrowser->setOpenLinks(false);
    setWindowTitle(inConfig.value(QStringLiteral("title")).toString());
    setMessage(inConfig.value(QStringLiteral("message")).toString());
    setFieldText(inConfig.value(QStringLiteral("fieldText")).toString());
    d->lineEdit->setVisible(inConfig.contains(QStringLiteral("showLineEdit")));
    d->lineEdit->setPlaceholderText(inConfig.value(QStringLiteral("lineEditPlaceholder")).toString());
    d->lineEdit->setEnabled(inConfig.value(QStringLiteral("lineEditEnabled")).toBool());
    setEditable(inConfig.value(QStringLiteral("editable")).toBool());
    setButtons(buttons.isEmpty() ? QVariantList{QLatin1String(DefaultButton)} : buttons);
    setButtonToolTips(inConfig.value(QStringLiteral("buttonToolTips")).toStringList());

    if (d->context.isEmpty())
        d->context = QLatin1String(DefaultContext);
    static const QRegularExpression whiteSpace(QStringLiteral("\\s+"));
    d->context.remove(whiteSpace);
    KyGUISizeManager::makeWidgetGeometryPersistent(
        this, QStringLiteral("KyScriptDialog_%1").arg(d->context),
        size.size() == 2 ? QSize(size[0].toInt(), size[1].toInt()) : QSize(0, 0), QPoint(0, 0));
}

int KyScriptDialog::exec()
{
    if (QJSEngine* engine = qjsEngine(this))
        engine->throwError(QJSValue::SyntaxError, QStringLiteral("Dialog.exec() is not yet implemented"));
    return 0;
}

void KyScriptDialog::show()
{
    if (KyScriptEngine* engine = KyScriptEngine::of(this))
        engine->registerForDestruction(this);
    d->result = 0;
    d->clickedButton = NoButton;
    d->buttonMenuItem = -1;
    QTimer::singleShot(0, this, &KyScriptDialog::appear);
}

void KyScriptDialog::setStatus(bool busy, QString status)
{
    busy ? d->indicator->start(status) : d->indicator->stop(status);
    makeStatusRoom();
}

void KyScriptDialog::setTitle(QString title)
{
    const KyScriptKeeper::Scope scope(d->keeper);
    setWindowTitle(title);
    nameParts();
}

QString KyScriptDialog::title()
{
    return windowTitle();
}

void KyScriptDialog::setMessage(QString message)
{
    d->label->setText(message);
    d->label->setMinimumWidth(isMessageTooWide() ? 1 : 0);
    const QString plain = plainText(message);
    plain.isEmpty() ? d->label->unsetLayoutDirection()
                    : d->label->setLayoutDirection(plain.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    nameParts();
    if (isVisible())
        makeRoom();
}

void KyScriptDialog::setFieldText(QString fieldText, QString type)
{
    QTextEdit* field = d->field();
    if (isType(type, "html"))
        return field->setHtml(fieldText);
    if (isType(type, "markdown"))
        return field->setMarkdown(fieldText);
    if (isType(type, "plaintext"))
        return field->setPlainText(fieldText);
    if (!type.isEmpty() && !isType(type, "auto"))
        warn(QStringLiteral("setFieldText(): Unsupported text type '%1' - falling back to 'auto'").arg(type));
    field->setText(fieldText);
}

QString KyScriptDialog::fieldText(QString type)
{
    const QTextEdit* field = d->field();
    if (isType(type, "html"))
        return field->toHtml();
    if (isType(type, "markdown"))
        return field->toMarkdown();
    if (!type.isEmpty() && !isType(type, "plaintext"))
        warn(
            QStringLiteral("fieldText(): Unsupported text type '%1' - falling back to plain text").arg(type));
    return field->toPlainText();
}

void KyScriptDialog::setEditable(bool editable)
{
    d->editable = editable;
    d->edit->setReadOnly(!editable);
    // What can only be read can be read, selected and copied by keyboard, too.
    if (!editable)
        d->edit->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    d->edit->viewport()->setAutoFillBackground(editable);
}

void KyScriptDialog::setLineEditEnabled(bool enabled)
{
    d->lineEdit->setEnabled(enabled);
}

void KyScriptDialog::setLineEditText(QString text)
{
    d->lineEdit->setText(text);
}

QString KyScriptDialog::lineEditText()
{
    return d->lineEdit->text();
}

void KyScriptDialog::scrollToBottom()
{
    d->isToScroll = !isVisible();
    d->scroll(true);
}

void KyScriptDialog::scrollToTop()
{
    d->isToScroll = false;
    d->scroll(false);
}

void KyScriptDialog::log(const QString& inText) const
{
    KyScriptLog::sessionLine(inText, d->context.toLatin1().constData());
}

void KyScriptDialog::warn(const QString& inText) const
{
    KyScriptLog::line(2, inText, d->context.toLatin1().constData());
}

void KyScriptDialog::keyPressEvent(QKeyEvent* inEvent)
{
    const bool isEnter = inEvent->key() == Qt::Key_Return || inEvent->key() == Qt::Key_Enter;
    // The line edit has its own way to tell of the key.
    if (isEnter && d->lineEdit->isVisible())
        return inEvent->ignore();
    JxDialog::keyPressEvent(inEvent);
}

void KyScriptDialog::addNotifications()
{
    for (const int code : {KyNotification::SessionClosed, KyNotification::PatientChanged})
        KyNotifiables::getInstance()->addNotification(this, KyNotification(code));
}

void KyScriptDialog::notified(const KyNotification& inNotification)
{
    const bool endsWork = inNotification.code == KyNotification::SessionClosed ||
                          inNotification.code == KyNotification::PatientChanged;
    if (!endsWork || !d->autoClose || !isVisible())
        return;
    d->clickedButton = AutoClosed;
    reject();
}
