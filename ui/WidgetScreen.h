#pragma once

#include "ports/Screen.h"

#include <QHash>

class QWidget;

// The core's text fields mapped onto the window's widgets by object name: line edits, text
// boxes and the text of choice lists.
class WidgetScreen : public Screen {
public:
    explicit WidgetScreen(QWidget& window) : m_window(window) {}
    void SetText(const QString& control, const QString& text) override;
    QString Text(const QString& control) const override;

private:
    QWidget* Find(const QString& control) const;

    QWidget& m_window;
    mutable QHash<QString, QWidget*> m_widgets;
};
