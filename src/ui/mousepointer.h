#pragma once

namespace duomir {

// Shows the busy pointer for as long as it lives and restores the previous pointer after, so a long
// operation that leaves early (a refusal, a failed scan) never leaves the pointer spinning.
class MousePointer
{
public:
    MousePointer();
    ~MousePointer();

    MousePointer(const MousePointer &) = delete;
    MousePointer &operator=(const MousePointer &) = delete;
};

} // namespace duomir
