#include "toolbars/SizePopoverController.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QRegularExpressionValidator>

namespace {

QLineEdit *sideField(int value, QWidget *parent)
{
    auto *field = new QLineEdit(QString::number(value), parent);
    field->setFixedWidth(60);
    field->setAlignment(Qt::AlignRight);
    // Digits only, so a fraction cannot even be typed; the range is checked on apply.
    field->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,5}")), field));
    return field;
}

} // namespace

SizePopoverController::SizePopoverController(const QSize &initial, QWidget *parent)
    : ToolbarPopover(parent), m_initial(initial)
{
    setFixedSize(200, 72);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 0, 10, 0);
    layout->setSpacing(6);
    m_wField = sideField(initial.width(), this);
    m_hField = sideField(initial.height(), this);
    m_apply = new QPushButton(tr("Apply"), this);
    m_apply->setDefault(true);
    m_apply->setAutoDefault(true);
    layout->addWidget(m_wField);
    layout->addWidget(new QLabel(QStringLiteral("×"), this));
    layout->addWidget(m_hField);
    layout->addWidget(new QLabel(tr("px"), this));
    layout->addWidget(m_apply);
    connect(m_apply, &QPushButton::clicked, this, [this] { apply(); });
    connect(m_wField, &QLineEdit::returnPressed, this, [this] { apply(); });
    connect(m_hField, &QLineEdit::returnPressed, this, [this] { apply(); });
}

std::optional<int> SizePopoverController::side(const QString &text)
{
    static const QRegularExpression wholeNumber(QStringLiteral("^[0-9]+$"));
    const QString trimmed = text.trimmed();
    if (!wholeNumber.match(trimmed).hasMatch())
        return std::nullopt;
    bool ok = false;
    const int value = trimmed.toInt(&ok);
    if (!ok || value < 1 || value > largestSide)
        return std::nullopt;
    return value;
}

bool SizePopoverController::apply()
{
    const std::optional<int> width = side(m_wField->text());
    const std::optional<int> height = side(m_hField->text());
    if (!width || !height) {
        // Point at the field to fix; the panel stays open.
        QLineEdit *wrong = width ? m_hField : m_wField;
        wrong->setFocus();
        wrong->selectAll();
        return false;
    }
    dismiss();
    if (onApply)
        onApply(*width, *height);
    return true;
}

void SizePopoverController::focusFirstField()
{
    m_wField->setFocus(Qt::PopupFocusReason);
    m_wField->selectAll();
}
