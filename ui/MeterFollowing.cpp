#include "ui/MeterFollowing.h"

#include "session/MeterSession.h"
#include "settings/SettingTable.h"
#include "ui/ChoiceLists.h"
#include "ui/MainForm.h"

#include <QComboBox>
#include <QSignalBlocker>

namespace {

// Addresses up to this one are the first entries of both address lists, in the same order.
constexpr int kListedAddresses = 60;

// Above the listed addresses the new one is appended, even if the list holds it already; up
// to them the entry of the same index is picked, which is none when the address was typed.
void FollowAddress(MainForm& form, MeterSession& session, int address)
{
    QComboBox* list = form.Combo_Modbus_add_sel;
    if (address > kListedAddresses) {
        {
            const QSignalBlocker quiet(list);
            list->addItem(QString::number(address));
        }
        SelectQuietly(list, list->count() - 1);
    } else {
        SelectQuietly(list, PickedIndex(form.Combo_Modbus_add));
    }
    if (PickedIndex(list) >= 0)
        session.ChooseAddress(list->currentText());
}

// The PC's list holds the meter's entries in the same order: the port takes the same index.
void FollowLine(MainForm& form, MeterSession& session, QComboBox* pcList, Setting setting, double written)
{
    SelectQuietly(pcList, ChoiceIndex(SpecOf(setting).fields[0], written));
    session.ChooseLine(form.Combo_BaudRate_Sel->currentText(), form.Combo_StopBit->currentText());
}

} // namespace

void FollowMeter(MainForm& form, MeterSession& session, Setting setting, const SettingValue& written)
{
    const double value = written.fields.value(0);
    if (setting == Setting::Address)
        FollowAddress(form, session, int(value));
    else if (setting == Setting::BaudRate)
        FollowLine(form, session, form.Combo_BaudRate_Sel, setting, value);
    else if (setting == Setting::StopBit)
        FollowLine(form, session, form.Combo_StopBit, setting, value);
}
