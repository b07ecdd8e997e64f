#include "toolbars/EditorToolbar.h"

#include "appui/Theme.h"
#include "overlay/SelectorSurface.h"
#include "settings/AppSettings.h"
#include "settings/HexColor.h"
#include "toolbars/ColorChip.h"
#include "toolbars/GlassBackdrop.h"
#include "toolbars/SizeChip.h"
#include "toolbars/SizePopoverController.h"
#include "toolbars/TextOptionsControl.h"
#include "toolbars/ToolbarChip.h"
#include "toolbars/ToolbarSeparator.h"
#include "toolbars/ToolbarTable.h"

#include <QHBoxLayout>
#include <QLoggingCategory>
#include <QPainter>

Q_LOGGING_CATEGORY(lcEditorToolbar, "glimpso.EditorToolbar")

using glimpso::Tool;

EditorToolbar::EditorToolbar(bool showsSize, std::function<void(const EditorAction &)> handler,
                             AppSettings &settings, QWidget *parent)
    : QWidget(parent), m_handler(std::move(handler)), m_settings(settings), m_showsSize(showsSize)
{
    setFixedHeight(barHeight);
    setCursor(Qt::ArrowCursor);
    setFocusPolicy(Qt::NoFocus);
    m_stack = new QHBoxLayout(this);
    m_stack->setContentsMargins(12, 6, 12, 6);
    m_stack->setSpacing(4);
    m_stack->addStretch(1);

    addToolChips(false);
    addSeparator();
    addToolChips(true);
    m_textOptions = new TextOptionsControl(28, this);
    m_textOptions->hide();
    m_textOptions->onChange = [this](const glimpso::TextOptions &options) {
        send(EditorAction::setTextOptions(options));
    };
    m_stack->addWidget(m_textOptions);
    addSeparator();

    m_colorChip = new ColorChip(false, this);
    m_colorChip->onColorChange = [this](const QColor &colour) {
        m_selectedColor = colour;
        send(EditorAction::selectColor(colour));
    };
    m_stack->addWidget(m_colorChip);
    addSeparator();

    if (m_showsSize) {
        m_sizeChip = new SizeChip(this);
        m_sizeChip->onClick = [this] { toggleSizePopover(); };
        m_stack->addWidget(m_sizeChip);
        addSeparator();
    }
    addActionChip(EditorAction::Kind::undo);
    addActionChip(EditorAction::Kind::redo);
    addSeparator();
    for (const auto kind : {EditorAction::Kind::copy, EditorAction::Kind::copyText, EditorAction::Kind::save,
                            EditorAction::Kind::upload, EditorAction::Kind::close})
        addActionChip(kind);
    m_stack->addStretch(1);

    setSelectedColor(HexColor::parse(settings.defaultColorHex()).value_or(QColor(QRgb(0xFF3B30))));
    applyChromeSettings();
    connect(&settings, &AppSettings::changed, this, [this](const QString &key) {
        if (key == m_settings.toolbarOpacity.key() || key == m_settings.toolbarBgColorHex.key()
            || key == m_settings.toolbarIconColorHex.key() || key == m_settings.toolbarCornerRadius.key())
            applyChromeSettings();
    });
    // Glass and "auto" icons follow the desktop between light and dark.
    connect(new Theme(this), &Theme::appearanceChanged, this, [this] { applyChromeSettings(); });
    resize(int(fittingWidth()), barHeight);
}

EditorToolbar::~EditorToolbar()
{
    delete m_sizePopover;
}

void EditorToolbar::addToolChips(bool textGroup)
{
    for (const ToolbarTable::ToolChip &entry : ToolbarTable::tools) {
        if ((entry.tool == Tool::text) != textGroup)
            continue;
        auto *chip = new ToolbarChip(entry.icon, ToolbarTable::toolTip(entry, m_settings),
                                     ToolbarChip::Metrics::floating(), false, this);
        const Tool tool = entry.tool;
        chip->onClick = [this, tool] { toolClicked(tool); };
        m_toolButtons[tool] = chip;
        m_stack->addWidget(chip);
    }
}

void EditorToolbar::addActionChip(EditorAction::Kind kind)
{
    for (const ToolbarTable::ActionChipEntry &entry : ToolbarTable::actions) {
        if (entry.action != kind)
            continue;
        auto *chip = new ToolbarChip(entry.icon, ToolbarTable::toolTip(entry, m_settings),
                                     ToolbarChip::Metrics::floating(), false, this);
        chip->onClick = [this, kind] { send(ToolbarTable::action(kind)); };
        m_actionButtons[kind] = chip;
        m_stack->addWidget(chip);
    }
}

void EditorToolbar::addSeparator()
{
    auto *separator = new ToolbarSeparator(this);
    m_separators.append(separator);
    m_stack->addWidget(separator, 0, Qt::AlignVCenter);
}

ToolbarChip *EditorToolbar::toolChip(Tool tool) const
{
    const auto found = m_toolButtons.find(tool);
    return found == m_toolButtons.end() ? nullptr : found->second;
}

ToolbarChip *EditorToolbar::actionChip(EditorAction::Kind kind) const
{
    const auto found = m_actionButtons.find(kind);
    return found == m_actionButtons.end() ? nullptr : found->second;
}

void EditorToolbar::send(const EditorAction &action)
{
    if (action.kind() == EditorAction::Kind::selectTool)
        qCDebug(lcEditorToolbar, "sends selectTool(%s)", qUtf8Printable(glimpso::toString(std::get<Tool>(action.payload()))));
    else
        qCDebug(lcEditorToolbar, "sends %s", qUtf8Printable(action.description()));
    if (m_handler)
        m_handler(action);
}

void EditorToolbar::toolClicked(Tool tool)
{
    const Tool next = ToolbarTable::toolAfterClick(m_selectedTool, tool);
    setSelectedTool(next);
    send(EditorAction::selectTool(next));
}

qreal EditorToolbar::fittingWidth() const
{
    return m_stack->sizeHint().width();
}

void EditorToolbar::place(SelectorSurface &surface, const QRectF &frame)
{
    const std::optional<SelectorSurface::ToolbarHost> host = surface.toolbarHost();
    if (!host || !host->widget)
        return;
    if (parentWidget() != host->widget)
        setParent(host->widget);
    setGeometry(host->toLocal(frame).toAlignedRect());
    show();
    raise();
    logChipPlaces();
}

void EditorToolbar::logChipPlaces() const
{
    if (!lcEditorToolbar().isDebugEnabled())
        return;
    const auto placeOf = [](const QWidget *chip) {
        const QPoint centre = chip->mapToGlobal(chip->rect().center());
        return QStringLiteral("%1,%2").arg(centre.x()).arg(centre.y());
    };
    for (const auto &[tool, chip] : m_toolButtons)
        qCDebug(lcEditorToolbar).noquote() << "chip" << glimpso::toString(tool) << "at" << placeOf(chip);
    for (const auto &[kind, chip] : m_actionButtons)
        qCDebug(lcEditorToolbar).noquote() << "chip" << ToolbarTable::action(kind).description() << "at" << placeOf(chip);
    qCDebug(lcEditorToolbar).noquote() << "chip colour at" << placeOf(m_colorChip);
}

void EditorToolbar::setCurrentSize(const QSize &pixels)
{
    m_currentSize = pixels;
    if (m_sizeChip)
        m_sizeChip->setPixels(pixels);
}

void EditorToolbar::setSelectedTool(Tool tool)
{
    m_selectedTool = tool;
    for (const auto &[chipTool, chip] : m_toolButtons)
        chip->setHighlighted(chipTool == tool);
}

void EditorToolbar::setSelectedColor(const QColor &color)
{
    m_selectedColor = color;
    m_colorChip->setColor(color);
}

void EditorToolbar::showTextOptions(const std::optional<glimpso::TextOptions> &options)
{
    if (options)
        m_textOptions->set(*options);
    const bool wasShown = !m_textOptions->isHidden();
    m_textOptions->setVisible(options.has_value());
    if (wasShown != options.has_value()) {
        m_stack->invalidate();
        if (m_onWidthChange)
            m_onWidthChange();
    }
}

SizePopoverController *EditorToolbar::sizePopover() const
{
    return m_sizePopover.data();
}

void EditorToolbar::toggleSizePopover()
{
    if (m_sizePopover && m_sizePopover->isOpen()) {
        m_sizePopover->dismiss();
        return;
    }
    delete m_sizePopover;
    m_sizePopover = new SizePopoverController(m_currentSize, window());
    m_sizePopover->onApply = [this](int width, int height) { send(EditorAction::setSize(QSize(width, height))); };
    m_sizePopover->onClose = [this] {
        if (m_sizeChip)
            m_sizeChip->setHighlighted(false);
    };
    m_sizeChip->setHighlighted(true);
    m_sizePopover->showBelow(m_sizeChip);
    m_sizePopover->focusFirstField();
}

void EditorToolbar::applyChromeSettings()
{
    m_chrome = ToolbarChrome::resolve(m_settings.toolbarBgColorHex(), m_settings.toolbarIconColorHex(),
                                      m_settings.toolbarOpacity(), m_settings.toolbarCornerRadius(),
                                      ToolbarChrome::darkAppearance());
    if (m_chrome.glass)
        showGlass(m_chrome.background);
    else
        removeGlass();
    const QColor tint = m_chrome.iconColor;
    for (const auto &[tool, chip] : m_toolButtons)
        chip->setTint(tint);
    for (const auto &[kind, chip] : m_actionButtons)
        chip->setTint(tint);
    m_colorChip->setTint(tint);
    if (m_sizeChip)
        m_sizeChip->setTint(tint);
    m_textOptions->setTint(tint);
    for (ToolbarSeparator *separator : std::as_const(m_separators))
        separator->setTint(tint);
    update();
}

void EditorToolbar::showGlass(const QColor &tint)
{
    if (!m_glassView) {
        m_glassView = new GlassBackdrop(this);
        m_glassView->setGeometry(rect());
        m_glassView->lower();
        m_glassView->show();
    }
    m_glassView->setLook(tint, m_chrome.cornerRadius);
}

void EditorToolbar::removeGlass()
{
    delete m_glassView;
    m_glassView = nullptr;
}

void EditorToolbar::resizeEvent(QResizeEvent *event)
{
    if (m_glassView)
        m_glassView->setGeometry(rect());
    QWidget::resizeEvent(event);
}

void EditorToolbar::paintEvent(QPaintEvent *)
{
    if (m_chrome.glass)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_chrome.background);
    painter.drawRoundedRect(QRectF(rect()), m_chrome.cornerRadius, m_chrome.cornerRadius);
}
