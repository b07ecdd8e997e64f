#include "toolbars/HeaderToolbar.h"

#include "settings/AppSettings.h"
#include "settings/EditorShortcutLookup.h"
#include "toolbars/AccentButton.h"
#include "toolbars/ColorChip.h"
#include "toolbars/PillGroup.h"
#include "toolbars/TextOptionsControl.h"
#include "toolbars/ToolbarChip.h"
#include "toolbars/ToolbarTable.h"

#include <QHBoxLayout>

#include <algorithm>

using glimpso::Tool;

namespace {

QWidget *horizontalStack(QWidget *parent)
{
    auto *stack = new QWidget(parent);
    auto *layout = new QHBoxLayout(stack);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(HeaderToolbar::stackSpacing);
    return stack;
}

void addTo(QWidget *stack, QWidget *view)
{
    static_cast<QHBoxLayout *>(stack->layout())->addWidget(view, 0, Qt::AlignVCenter);
}

} // namespace

HeaderToolbar::HeaderToolbar(std::function<void(const EditorAction &)> handler, AppSettings &settings,
                             QWidget *parent)
    : QWidget(parent), m_handler(std::move(handler)), m_settings(settings)
{
    m_leading = horizontalStack(this);
    m_trailing = horizontalStack(this);

    auto *tools = new PillGroup(m_leading);
    for (const ToolbarTable::ToolChip &entry : ToolbarTable::tools) {
        auto *chip = new ToolbarChip(entry.icon, ToolbarTable::toolTip(entry, settings), ToolbarChip::Metrics::header(),
                                     true, tools);
        const Tool tool = entry.tool;
        chip->onClick = [this, tool] { toolClicked(tool); };
        m_toolButtons[tool] = chip;
        tools->add(chip);
    }
    addTo(m_leading, tools);

    m_textPill = new PillGroup(m_leading);
    m_textOptions = new TextOptionsControl(28, m_textPill);
    m_textOptions->onChange = [this](const glimpso::TextOptions &options) {
        send(EditorAction::setTextOptions(options));
    };
    m_textPill->add(m_textOptions);
    m_textPill->hide();
    addTo(m_leading, m_textPill);

    auto *colour = new PillGroup(m_leading);
    m_colorChip = new ColorChip(true, colour);
    m_colorChip->onColorChange = [this](const QColor &chosen) { send(EditorAction::selectColor(chosen)); };
    colour->add(m_colorChip);
    addTo(m_leading, colour);

    auto *history = new PillGroup(m_leading);
    makeActionChip(EditorAction::Kind::undo, history);
    makeActionChip(EditorAction::Kind::redo, history);
    addTo(m_leading, history);

    auto *outputs = new PillGroup(m_trailing);
    makeActionChip(EditorAction::Kind::copy, outputs);
    makeActionChip(EditorAction::Kind::upload, outputs);
    makeActionChip(EditorAction::Kind::copyText, outputs);
    addTo(m_trailing, outputs);
    m_save = new AccentButton(tr("Save"), m_trailing);
    m_save->setToolTip(ToolbarTable::toolTip(ToolbarTable::entry(ToolbarTable::ActionChip::save), settings));
    connect(m_save, &QAbstractButton::clicked, this, [this] { send(EditorAction::save()); });
    addTo(m_trailing, m_save);

    const QColor tint = palette().color(QPalette::WindowText);
    for (const auto &[tool, chip] : m_toolButtons)
        chip->setTint(tint);
    for (const auto &[kind, chip] : m_actionButtons)
        chip->setTint(tint);
    m_colorChip->setTint(tint);
    m_textOptions->setTint(tint);
    layoutStacks();
}

ToolbarChip *HeaderToolbar::makeActionChip(EditorAction::Kind kind, PillGroup *group)
{
    for (const ToolbarTable::ActionChipEntry &entry : ToolbarTable::actions) {
        if (entry.action != kind)
            continue;
        auto *chip = new ToolbarChip(entry.icon, ToolbarTable::toolTip(entry, m_settings),
                                     ToolbarChip::Metrics::header(), false, group);
        chip->onClick = [this, kind] { send(ToolbarTable::action(kind)); };
        m_actionButtons[kind] = chip;
        group->add(chip);
        return chip;
    }
    return nullptr;
}

ToolbarChip *HeaderToolbar::toolChip(Tool tool) const
{
    const auto found = m_toolButtons.find(tool);
    return found == m_toolButtons.end() ? nullptr : found->second;
}

ToolbarChip *HeaderToolbar::actionChip(EditorAction::Kind kind) const
{
    const auto found = m_actionButtons.find(kind);
    return found == m_actionButtons.end() ? nullptr : found->second;
}

void HeaderToolbar::send(const EditorAction &action)
{
    if (m_handler)
        m_handler(action);
}

void HeaderToolbar::toolClicked(Tool tool)
{
    const Tool next = ToolbarTable::toolAfterClick(m_selectedTool, tool);
    setSelectedTool(next);
    send(EditorAction::selectTool(next));
}

void HeaderToolbar::setSelectedTool(Tool tool)
{
    m_selectedTool = tool;
    for (const auto &[chipTool, chip] : m_toolButtons)
        chip->setHighlighted(chipTool == tool);
}

void HeaderToolbar::setSelectedColor(const QColor &color)
{
    m_colorChip->setColor(color);
}

void HeaderToolbar::showTextOptions(const std::optional<glimpso::TextOptions> &options)
{
    if (options)
        m_textOptions->set(*options);
    if (m_textPill->isHidden() == !options.has_value())
        return;
    m_textPill->setVisible(options.has_value());
    layoutStacks();
}

void HeaderToolbar::centerTools(qreal anchorX)
{
    m_anchorX = anchorX;
    layoutStacks();
}

qreal HeaderToolbar::leadingX(qreal width, std::optional<qreal> anchorX, qreal leadingWidth, qreal trailingWidth)
{
    const qreal leftmost = outerMargin;
    const qreal rightmost = width - outerMargin - trailingWidth - stackSpacing - leadingWidth;
    if (!anchorX)
        return leftmost;
    const qreal centred = *anchorX - leadingWidth / 2;
    // The centring is the weaker wish: it gives way to both margins.
    return std::max(leftmost, std::min(centred, rightmost));
}

QSize HeaderToolbar::sizeHint() const
{
    const QSize leading = m_leading->sizeHint();
    const QSize trailing = m_trailing->sizeHint();
    return {2 * outerMargin + leading.width() + stackSpacing + trailing.width(),
            std::max({leading.height(), trailing.height(), 40})};
}

void HeaderToolbar::layoutStacks()
{
    m_leading->adjustSize();
    m_trailing->adjustSize();
    const QSize leading = m_leading->sizeHint();
    const QSize trailing = m_trailing->sizeHint();
    const int trailingX = width() - outerMargin - trailing.width();
    m_trailing->setGeometry(trailingX, (height() - trailing.height()) / 2, trailing.width(), trailing.height());
    const qreal x = leadingX(width(), m_anchorX, leading.width(), trailing.width());
    m_leading->setGeometry(int(x), (height() - leading.height()) / 2, leading.width(), leading.height());
    updateGeometry();
}

void HeaderToolbar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutStacks();
}
