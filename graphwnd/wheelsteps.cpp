#include "graphwnd/wheelsteps.h"

int CWheelSteps::Take(int angle, int keys)
{
    if (keys != m_keys || (angle > 0 && m_rest < 0) || (angle < 0 && m_rest > 0))
        m_rest = 0;
    m_keys = keys;
    m_rest += angle;
    const int notches = m_rest / 120; // toward zero
    m_rest -= notches * 120;
    return notches;
}
