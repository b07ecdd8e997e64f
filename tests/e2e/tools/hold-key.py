#!/usr/bin/python3
"""Another X client that holds one key combination, as a desktop's own
shortcut daemon would: grabs it on the root window, prints "holding" once the
server has accepted, and prints "pressed SECONDS" (the time of day it read the
press, for the hotkey benchmark) for each press it receives.

    hold-key.py KEYSYM MODIFIER...      e.g.  hold-key.py 2 ctrl shift
"""
import sys
import time

from Xlib import X, XK, display, error

MASKS = {"ctrl": X.ControlMask, "shift": X.ShiftMask, "alt": X.Mod1Mask, "super": X.Mod4Mask}


def main():
    keysym = XK.string_to_keysym(sys.argv[1])
    modifiers = 0
    for name in sys.argv[2:]:
        modifiers |= MASKS[name]
    d = display.Display()
    root = d.screen().root
    keycode = d.keysym_to_keycode(keysym)
    failed = []
    root.grab_key(keycode, modifiers, False, X.GrabModeAsync, X.GrabModeAsync,
                  onerror=lambda err, *_: failed.append(err))
    d.sync()
    if failed:
        print("refused", flush=True)
        return 1
    print("holding", flush=True)
    while True:
        event = d.next_event()
        if event.type == X.KeyPress:
            print("pressed %.6f" % time.time(), flush=True)


if __name__ == "__main__":
    sys.exit(main())
