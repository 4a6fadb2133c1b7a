"""A desktop of one's own for tests: an X server without a screen, a window manager, a tray, a session bus, and
what assistive technology sees of the programs on it. The desktop of the person who runs the tests is left alone.
"""

from desktop.geometry import Rectangle
from desktop.network import Network
from desktop.picture import Picture, contrast
from desktop.portal import Portal
from desktop.session import Desktop
from desktop.tarnly import Tarnly

__all__ = ["Desktop", "Network", "Picture", "Portal", "Rectangle", "Tarnly", "contrast"]
