#pragma once

namespace lexicorn {

// Mouse event types, numbered as the platform numbers them; bit n of an
// event mask selects type n.
enum EventType : int {
    leftMouseDown = 1,
    leftMouseUp = 2,
    leftMouseDragged = 6,
    otherMouseDown = 25,
    otherMouseUp = 26,
    otherMouseDragged = 27,
};

}  // namespace lexicorn
