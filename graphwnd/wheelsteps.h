#pragma once
// Wheel input as whole notches.  A classic wheel sends 120 units a notch;
// high-resolution wheels and touchpads send the same notch in many small
// events (8 of 15, 24 of 5...).  The parts are summed until they make a
// notch, and what is left over waits for the next event; turning the other
// way, or a change of the keys held, starts afresh.

class CWheelSteps
{
public:
    // Adds `angle` units (120 a notch) under the key state `keys` and
    // returns the whole notches now complete, signed.
    int Take(int angle, int keys);
    void Reset() { m_rest = 0; }
    int Rest() const { return m_rest; }

private:
    int m_rest = 0;
    int m_keys = 0;
};
