#include "ui/StaleReadings.h"

#include "connection/ReadingFreshness.h"

#include <QLabel>
#include <QLineEdit>

StaleReadings::StaleReadings(QWidget& page, QLabel& note, const ReadingFreshness& freshness)
    : m_page(page), m_note(note), m_freshness(freshness)
{
    connect(&freshness, &ReadingFreshness::changed, this, &StaleReadings::Show);
    Show();
}

void StaleReadings::Show()
{
    const bool stale = m_freshness.Stale();
    for (QLineEdit* field : m_page.findChildren<QLineEdit*>()) {
        QPalette palette = field->palette();
        palette.setColor(QPalette::Text, m_page.palette().color(stale ? QPalette::Disabled : QPalette::Active, QPalette::Text));
        field->setPalette(palette);
    }
    m_note.setText(m_freshness.Note());
    m_note.setVisible(stale);
}
