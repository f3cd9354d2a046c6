"""What the program prints for Prometheus, read and handed on to promtool."""

import json
import re
from typing import Iterable, NamedTuple

LABEL = re.compile(r'([a-z_]+)="((?:[^"\\]|\\.)*)"')


class Sample(NamedTuple):
    name: str
    labels: dict[str, str]
    value: str


def read(text: str) -> list[Sample]:
    """The samples of a text in Prometheus' format."""
    samples = []
    for line in text.splitlines():
        if line and not line.startswith("#"):
            series, value = line.rsplit(" ", 1)
            name, _, labels = series.partition("{")
            samples.append(Sample(name, {key: json.loads(f'"{word}"') for key, word in LABEL.findall(labels)}, value))
    return samples


def selector(name: str, labels: dict[str, str]) -> str:
    return name + "{" + ",".join(f"{key}={json.dumps(word)}" for key, word in labels.items()) + "}"


def scraped(samples: Iterable[Sample], instance: str, minutes: int) -> list[dict[str, str]]:
    """The same values at every scrape of so many minutes, as promtool wants its input; answers are never old."""
    target = {"instance": instance, "job": "raid"}
    inputs = [{"series": selector("up", target), "values": f"1x{minutes}"}]
    for sample in samples:
        is_time = sample.name.endswith("_timestamp_seconds")
        inputs.append({"series": selector(sample.name, target | sample.labels),
                       "values": f"0+60x{minutes}" if is_time else f"{sample.value}x{minutes}"})
    return inputs
