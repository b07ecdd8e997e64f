#pragma once

#include <QColor>
#include <QWidget>

#include <optional>

// A short state in a rounded capsule: green for a state that is good
// ("Connected", "Up to date"), grey for one that is only told. It may lead
// with a check mark or with a dot of its own colour.
class StatusPill : public QWidget
{
    Q_OBJECT

public:
    enum class Kind { success, neutral };

    explicit StatusPill(const QString &text, Kind kind = Kind::neutral, QWidget *parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString &text);
    Kind kind() const { return m_kind; }
    void setKind(Kind kind);
    bool showCheck() const { return m_showCheck; }
    void setShowCheck(bool show);
    std::optional<QColor> dot() const { return m_dot; }
    void setDot(std::optional<QColor> dot);

    // The capsule's fill and its text colour for the current appearance.
    QColor fillColor() const;
    QColor inkColor() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // Width of what stands before the text (check or dot and its gap).
    qreal leadWidth() const;
    void changed();

    QString m_text;
    Kind m_kind;
    bool m_showCheck = false;
    std::optional<QColor> m_dot;
};
