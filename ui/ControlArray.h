#pragma once

#include <QList>
#include <QMap>
#include <QString>

#include <utility>

// An indexed family of controls sharing one name, such as the phase voltage fields
// txt_V_N(0) to txt_V_N(3). Only the indices that were added exist; the numbering follows the
// meter's register layout, so some families start above 0 (txt_I_Result(3) to (6)).
// The array does not own its controls: the window's layouts do.
template <typename T>
class ControlArray {
public:
    explicit ControlArray(QString name) : m_name(std::move(name)) {}

    ControlArray(const ControlArray&) = delete;
    ControlArray& operator=(const ControlArray&) = delete;

    // Makes `control` element `index` and names it "name(index)", the name the rest of the
    // tool and the accessibility tree know it by.
    T* add(int index, T* control)
    {
        Q_ASSERT_X(!m_elements.contains(index), "ControlArray::add", "index already taken");
        control->setObjectName(QStringLiteral("%1(%2)").arg(m_name).arg(index));
        m_elements.insert(index, control);
        return control;
    }

    T* operator()(int index) const
    {
        Q_ASSERT_X(m_elements.contains(index), "ControlArray", "no element with this index");
        return m_elements.value(index);
    }

    bool contains(int index) const { return m_elements.contains(index); }
    QList<int> indices() const { return m_elements.keys(); }
    const QString& name() const { return m_name; }

private:
    QString m_name;
    QMap<int, T*> m_elements;
};
