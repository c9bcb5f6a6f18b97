#pragma once

// Which of left Shift, right Shift and left Ctrl are held at the moment of a
// click: some commands change with them.
class ModifierKeys
{
public:
    // The virtual-key numbers commands ask for.
    enum Key
    {
        LeftShift = 160,
        RightShift = 161,
        LeftControl = 162
    };

    virtual ~ModifierKeys() = default;

    virtual bool isDown(Key key) const = 0;
};
