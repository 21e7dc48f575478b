"""A client that sees the JSON dialect of a station: what the broker keeps, and what came in which
order."""

import json
import threading

import paho.mqtt.client as mqtt

from processes import PATIENCE_S


class RetainedTopics:
    """Subscribes to all topics of a node, which are told here without kakb/NODE/."""

    def __init__(self, port, node="kakb-station"):
        self.prefix = f"kakb/{node}/"
        self.lock = threading.Condition()
        self.kept = {}  # by topic; texts, or documents. Guarded by lock, as is the rest.
        self.came = []  # (topic, text or document, whether the broker had kept it)
        self.subscribed = threading.Event()
        self.client = mqtt.Client()
        self.client.on_connect = lambda client, *_: client.subscribe(self.prefix + "#", 1)
        self.client.on_subscribe = lambda *_: self.subscribed.set()
        self.client.on_message = self._take
        self.client.connect_async("127.0.0.1", port, 60)
        self.client.loop_start()
        assert self.subscribed.wait(PATIENCE_S), "the broker grants no subscription"

    def close(self):
        """Leaves the broker."""
        self.client.disconnect()
        self.client.loop_stop()

    def publish(self, topic, payload, retain=False):
        """Publishes a document, or bytes as they are; returns when the broker has it."""
        data = payload if isinstance(payload, bytes) else json.dumps(payload)
        self.client.publish(self.prefix + topic, data, qos=1, retain=retain).wait_for_publish()

    def await_that(self, condition, seconds=PATIENCE_S):
        """Waits until a condition on this client is true; fails when it never is."""
        with self.lock:
            assert self.lock.wait_for(lambda: condition(self), seconds), (
                f"never came true: {self.kept} {self.came[-20:]}")

    def await_state(self, topic, value, quality="good"):
        """Waits until the tag has this value and quality."""
        def has_it(_):
            state = self.kept.get(topic)
            return state and (state["v"], state["q"]) == (value, quality)
        self.await_that(has_it)

    def await_word(self, topic, word):
        """Waits until the topic says online or offline."""
        self.await_that(lambda _: self.kept.get(topic) == word)

    def on(self, topic):
        """All that came on a topic."""
        with self.lock:
            return [payload for at, payload, _ in self.came if at == topic]

    def _take(self, _, __, message):
        topic, text = message.topic.removeprefix(self.prefix), message.payload.decode()
        payload = json.loads(text) if text.startswith("{") else text
        with self.lock:
            self.came.append((topic, payload, bool(message.retain)))
            if topic.endswith(("/set", "/result")):
                pass  # of no lasting meaning
            elif text:
                self.kept[topic] = payload
            else:
                self.kept.pop(topic, None)
            self.lock.notify_all()
