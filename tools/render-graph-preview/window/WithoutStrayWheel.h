#pragma once

#include <QWheelEvent>

// A widget that the wheel changes only if it has the focus; else the wheel scrolls what it is in.
template<typename Base>
class WithoutStrayWheel : public Base
{
public:
    explicit WithoutStrayWheel()
    {
        this->setFocusPolicy(Qt::StrongFocus); // not by the wheel
    }

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        if (this->hasFocus())
            Base::wheelEvent(event);
        else
            event->ignore();
    }
};
