#pragma once

class Clock;
class IntervalLists;
class OperatorPrompts;

// What the core needs from the one presenting it.
struct SessionPorts {
    OperatorPrompts& prompts;
    IntervalLists& intervalLists;
    const Clock& clock;
};
