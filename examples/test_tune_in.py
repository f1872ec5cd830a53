"""An application's tune-in flow, tested against a simulated receiver.

Run it from a build tree:  PYTHONPATH=build/ci/python python3 -m pytest examples/
"""

import pytest

from tessarine import EndOfMedia, Rectangle

FULL_SCREEN = Rectangle(0, 0, 1920, 1080)
BESIDE_THE_APP = Rectangle(0, 0, 960, 540)
STOP = 3  # the application-state request that ends the application


class TuneInApp:
    """The application under test. It tunes to a service, shows what is on,
    plays its intro, makes room for itself when the broadcast starts its
    document, and gives the screen back when it is told to stop."""

    def __init__(self, client):
        self.client = client
        self.now_showing = None
        client.on_dsmcc_command(self.stream_event)
        client.on_app_state_request(self.app_state)

    def tune_in(self, name):
        service = next(s for s in self.client.services() if s.text0 == name)
        event = self.client.program_event()
        self.now_showing = f"{service.text0}: {event.text0}" if event else service.text0
        intro = self.client.open_media("file:///media/intro.mp4")
        self.client.add_media_listener(intro)
        self.client.play_media(intro)
        return intro

    def stream_event(self, command):  # on the client's event thread
        if command.text.startswith("start(document="):
            self.client.set_video_bounds(BESIDE_THE_APP.x, BESIDE_THE_APP.y, BESIDE_THE_APP.width,
                                         BESIDE_THE_APP.height)

    def app_state(self, state):  # the answer goes back to the middleware
        if state != STOP:
            return 0
        self.client.reset_video()
        return 1


@pytest.mark.tessarine_sim(scenario="tune-in.json")
def test_tune_in(tessarine_sim):
    client = tessarine_sim.client
    app = TuneInApp(client)

    intro = app.tune_in("Tessarine One")
    assert app.now_showing == "Tessarine One: Evening News"
    assert next(e for e in client.events(timeout=5) if isinstance(e, EndOfMedia)) == EndOfMedia(intro)

    tessarine_sim.command("dsmcc 1 42 0 start(document=main.ncl)")
    tessarine_sim.wait_for_log(r"request video 0 set bounds 0,0,960,540")
    assert client.video_bounds() == BESIDE_THE_APP

    assert tessarine_sim.app_state(STOP) == 1
    assert client.video_bounds() == FULL_SCREEN
