#pragma once

#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/MainForm.h"

// The window with the simulated meter (unpaced unless asked) chosen as its port, as the
// operator sets it up; going on line is the test's to do. The window goes before the meter it
// talks to.
struct WindowOnLine {
    explicit WindowOnLine(bool paced = false)
    {
        meter.setPacing(paced);
        form.session().connection.simulatedMeterDevice = meter.deviceSource();
        form.Form_Load();
        form.ChooseSimulatedMeter();
    }

    sim::SimulatedMeterHost meter;
    MainForm form;
};
