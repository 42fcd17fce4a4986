#pragma once

#include "ui/OperatorChoices.h"
#include "ui/Screen.h"

#include <QHash>

class QWidget;

class QComboBox;

// The core's text fields and choice lists mapped onto the window's widgets by object name:
// line edits, text boxes and combo boxes.
class WidgetScreen : public Screen, public OperatorChoices {
public:
    explicit WidgetScreen(QWidget& window) : m_window(window) {}
    void SetText(const QString& control, const QString& text) override;
    QString Text(const QString& control) const override;
    int ListIndex(const QString& list) const override;
    int Count(const QString& list) const override;
    void Select(const QString& list, int index) override;
    void Append(const QString& list, const QString& text) override;

private:
    QWidget* Find(const QString& control) const;
    QComboBox* FindList(const QString& list) const;

    QWidget& m_window;
    mutable QHash<QString, QWidget*> m_widgets;
};
