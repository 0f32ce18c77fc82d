#include "KyPropertyEditor.h"

#include <ovbase/OvProperty.h>
#include <ovbase/OvRegistry.h>

#include <QtCore/QEvent>
#include <QtCore/QSignalBlocker>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <limits>

namespace {

constexpr double MaxNumber = 1e9;
constexpr int Decimals = 4;

QString idOf(const OvVariant& inProperty)
{
    return QString::fromLatin1(inProperty.identifier().c_str());
}

/// The layers of the registry that outlive this process and hold a value of the property.
std::vector<OvRegistry::Priority> storedLayers(const OvVariant& inProperty)
{
    const OvRegistry* registry = OvRegistry::getInstance();
    auto layers = registry ? registry->layers(idOf(inProperty)) : std::vector<OvRegistry::Priority>();
    std::erase_if(layers, [](OvRegistry::Priority layer) { return layer >= OvRegistry::SessionPriority; });
    return layers;
}

bool isSetByScript(const OvVariant& inProperty)
{
    const auto layers = storedLayers(inProperty);
    return std::find(layers.begin(), layers.end(), OvRegistry::ScriptPriority) != layers.end();
}

/// Takes away the values of a property in the layers from \a inLowest on that outlive this process.
void removeLayers(const OvVariant& inProperty, OvRegistry::Priority inLowest)
{
    for (const OvRegistry::Priority layer : storedLayers(inProperty)) {
        if (layer >= inLowest)
            OvRegistry::getInstance()->removeProperty(idOf(inProperty), layer);
    }
}

} // namespace

KyPropertyEditor::KyPropertyEditor(OvVariant& ioProperty, const QString& inLabel, QWidget* inParent)
    : QWidget(inParent)
    , mProperty(ioProperty)
    , mReset(new QToolButton(this))
{
    setObjectName(idOf(mProperty));
    QWidget* editor = makeEditor();
    editor->setAccessibleName(inLabel);
    setFocusProxy(editor);
    // Who scrolls through the settings must not change those that pass below the pointer.
    editor->setFocusPolicy(Qt::StrongFocus);
    editor->installEventFilter(this);
    mReset->setText(tr("Reset"));
    mReset->setToolTip(tr("Back to the default"));
    mReset->setAccessibleName(tr("Reset %1").arg(inLabel));
    mReset->setAutoRaise(true);
    connect(mReset, &QToolButton::clicked, this, &KyPropertyEditor::reset);

    auto* all = new QHBoxLayout(this);
    all->setContentsMargins(0, 1, 4, 1);
    all->addWidget(editor, 1);
    all->addWidget(mReset);
    mProperty.connectPropertyChangedSignal(
        this, [this](const OvVariant*) { refresh(); }, false);
    if (KyNotifiables* notifiables = KyNotifiables::getInstance())
        notifiables->addNotification(this, KyNotification(KyNotification::PropertyChanged, 0, 0, &mProperty));
    refresh();
}

void KyPropertyEditor::followInTabOrder(const KyPropertyEditor& inPrevious)
{
    setTabOrder(inPrevious.mReset, focusProxy());
    setTabOrder(focusProxy(), mReset);
}

/// Beside a change of the value itself: a layer may have come or gone.
void KyPropertyEditor::notified(const KyNotification&)
{
    refresh();
}

bool KyPropertyEditor::eventFilter(QObject*, QEvent* inEvent)
{
    if (inEvent->type() != QEvent::Wheel || focusProxy()->hasFocus())
        return false;
    inEvent->ignore();
    return true;
}

QWidget* KyPropertyEditor::makeEditor()
{
    if (mProperty.isType<bool>())
        return makeCheckBox();
    if (mProperty.isType<int>())
        return makeIntegerBox();
    if (mProperty.isType<double>())
        return makeNumberBox();
    if (const OvEnum* enumeration = mProperty.enumeration())
        return makeChoice(*enumeration);
    return makeLine();
}

QWidget* KyPropertyEditor::makeCheckBox()
{
    auto* box = new QCheckBox(this);
    connect(box, &QCheckBox::toggled, this,
            [this](bool on) { store(on ? QStringLiteral("true") : QStringLiteral("false")); });
    mShowValue = [this, box] { box->setChecked(static_cast<OvProperty<bool>&>(mProperty).value); };
    return box;
}

QWidget* KyPropertyEditor::makeIntegerBox()
{
    auto* box = new QSpinBox(this);
    box->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    box->setKeyboardTracking(false);
    connect(box, &QSpinBox::valueChanged, this, [this](int value) { store(QString::number(value)); });
    mShowValue = [this, box] { box->setValue(static_cast<OvProperty<int>&>(mProperty).value); };
    return box;
}

QWidget* KyPropertyEditor::makeNumberBox()
{
    auto* box = new QDoubleSpinBox(this);
    box->setRange(-MaxNumber, MaxNumber);
    box->setDecimals(Decimals);
    box->setKeyboardTracking(false);
    connect(box, &QDoubleSpinBox::valueChanged, this,
            [this](double value) { store(QString::number(value)); });
    mShowValue = [this, box] { box->setValue(static_cast<OvProperty<double>&>(mProperty).value); };
    return box;
}

QWidget* KyPropertyEditor::makeChoice(const OvEnum& inEnumeration)
{
    auto* box = new QComboBox(this);
    for (const OvEnum::ValuePointer& value : OvEnum::values(inEnumeration.name())) {
        const QString key = QString::fromLatin1(value->key());
        box->addItem(value->label().isEmpty() ? key : value->label(), key);
    }
    connect(box, &QComboBox::activated, this, [this, box] { store(box->currentData().toString()); });
    mShowValue = [this, box] { box->setCurrentIndex(box->findData(mProperty.toQString())); };
    return box;
}

QWidget* KyPropertyEditor::makeLine()
{
    auto* line = new QLineEdit(this);
    line->setPlaceholderText(mProperty.isType<QList<QString>>() ? tr("Texts with commas between them")
                                                                : tr("Not set"));
    connect(line, &QLineEdit::editingFinished, this, [this, line] { store(line->text()); });
    mShowValue = [this, line] { line->setText(mProperty.toQString()); };
    return line;
}

void KyPropertyEditor::store(const QString& inText)
{
    const QString before = mProperty.toQString();
    mProperty.setValueFromQString(inText);
    const bool hasChanged = mProperty.toQString() != before;
    // What a script has set would be back at the next start.
    if (hasChanged)
        removeLayers(mProperty, OvRegistry::UserPriority + 1);
    refresh();
    if (hasChanged)
        tellOfChange();
}

void KyPropertyEditor::refresh()
{
    const QSignalBlocker blocker(focusProxy());
    mShowValue();
    mReset->setEnabled(!storedLayers(mProperty).empty());
    const QString id = idOf(mProperty);
    focusProxy()->setToolTip(isSetByScript(mProperty) ? tr("%1 (set by a script)").arg(id) : id);
}

void KyPropertyEditor::reset()
{
    const QString before = mProperty.toQString();
    removeLayers(mProperty, OvRegistry::EffectivePriority);
    mProperty.deserialize();
    refresh();
    if (mProperty.toQString() != before)
        tellOfChange();
}

void KyPropertyEditor::tellOfChange()
{
    KyNotifiable::notify(KyNotification(KyNotification::PropertyChanged, 0, 0, &mProperty));
}
