#pragma once

class Clock;
class IntervalLists;
class OperatorChoices;
class OperatorPrompts;
class Screen;

// What the core needs from the one presenting it.
struct SessionPorts {
    Screen& screen;
    OperatorChoices& choices;
    OperatorPrompts& prompts;
    IntervalLists& intervalLists;
    const Clock& clock;
};
