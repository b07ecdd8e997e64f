#include "annotation/TextEntry.h"

#include "annotation/TextEntryField.h"
#include "annotation/TextEntryHost.h"
#include "annotation/TextLook.h"

#include <algorithm>
#include <cmath>

namespace glimpso {

namespace {

const QString lineSample = QStringLiteral("Ag");

} // namespace

bool TextEntry::open(const TextHost &host, QPointF p, const TextOptions &options)
{
    close();
    if (!host.host || !host.toLocal)
        return false;
    const double lineHeight = TextLook::boxSize(lineSample, options).height();
    m_origin = QPointF(p.x(), p.y() + lineHeight / 2);
    m_width = minimumWidth;
    m_field = host.host->openField(host.toLocal(fieldFrame(m_origin, m_width, options)));
    if (!m_field)
        return false;
    m_host = host.host;
    m_toLocal = host.toLocal;
    return true;
}

QString TextEntry::text() const
{
    return m_field ? m_field->text() : QString();
}

QRectF TextEntry::fieldFrame(QPointF origin, double width, const TextOptions &options)
{
    const QPointF inset = TextLook::insets(options);
    const double h = std::ceil(TextLook::measure(lineSample, TextLook::font(options)).height());
    return {origin.x() + inset.x() - 2, origin.y() - inset.y() - h, width, h};
}

void TextEntry::place(const TextOptions &options)
{
    if (m_field)
        m_field->setFrame(m_toLocal(fieldFrame(m_origin, m_width, options)));
}

void TextEntry::style(const TextOptions &options, const QColor &color, const QRectF &canvas)
{
    if (!m_field)
        return;
    m_field->setLook(options, color);
    place(options);
    fit(options, canvas);
}

void TextEntry::fit(const TextOptions &options, const QRectF &canvas)
{
    if (!m_field)
        return;
    const double textWidth = TextLook::measure(m_field->shownText(), TextLook::font(options)).width();
    const double room = std::max(canvas.right() - m_origin.x() - 4, minimumWidth);
    const double width = std::min(std::max(textWidth + 8, minimumWidth), room);
    if (std::abs(width - m_width) > 0.5) {
        m_width = width;
        place(options);
    }
}

void TextEntry::moveBy(QPointF travel, const TextOptions &options)
{
    if (!m_field)
        return;
    m_origin += travel;
    place(options);
}

void TextEntry::close()
{
    if (m_field && m_host)
        m_host->closeField(m_field);
    m_field = nullptr;
    m_host = nullptr;
    m_toLocal = {};
    m_origin = {};
    m_width = minimumWidth;
}

} // namespace glimpso
