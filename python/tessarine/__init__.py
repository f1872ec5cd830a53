"""tessarine for Python: the application's side of the bridge, and a simulated
receiver to test applications against.

``Client`` and ``DemuxClient`` wrap the C++ client library; its failures
raise subclasses of ``Error``. ``Simulator`` runs ``tessarine-sim``; the
pytest plugin (``tessarine.pytest_plugin``) hands one to each test.
"""

from ._tessarine import (
    Client,
    ConnectionLost,
    DemuxClient,
    Error,
    EventIterator,
    InvalidArgument,
    MalformedAnswer,
    NotConnected,
    TimedOut,
)
from .records import (
    AppStateRequest,
    Descriptor,
    Disconnected,
    DownloadComplete,
    DsmccCommand,
    EndOfMedia,
    GraphicsSettings,
    Network,
    Pmt,
    ProgramEvent,
    RawFrame,
    Rectangle,
    Service,
    ServiceComponent,
    SystemProperty,
    TransportStream,
)
from .simulator import Simulator, SimulatorError

__all__ = [name for name in dir() if not name.startswith("_") and name[0].isupper()]
