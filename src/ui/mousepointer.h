#pragma once

namespace duomir {

// Shows the busy pointer for as long as it lives and restores the previous pointer after, so a long
// operation that leaves early (a refusal, a failed scan) never leaves the pointer spinning. A
// dialog that waits for the user in the middle releases it and holds it again after.
class MousePointer
{
public:
    MousePointer() { hold(); }
    ~MousePointer() { release(); }

    MousePointer(const MousePointer &) = delete;
    MousePointer &operator=(const MousePointer &) = delete;

    void hold();
    void release();

private:
    bool m_held = false;
};

} // namespace duomir
