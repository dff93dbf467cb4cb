"""Measuring in rounds: in each one every contestant has its turn, so that a slow minute of the machine hits
all alike. Later rounds begin with another contestant."""
import statistics
import sys
import time


class Budget:
    """When to begin no further round. Without seconds there is no limit."""

    def __init__(self, seconds=None):
        self.deadline = None if seconds is None else time.monotonic() + seconds

    def is_spent(self):
        return self.deadline is not None and time.monotonic() > self.deadline


def in_turn(contestants, number):
    """The contestants in the order of this round."""
    start = number % len(contestants)
    return contestants[start:] + contestants[:start]


def measure_rounds(contestants, count, measure, budget=Budget()):
    """{name: [record of each round]}. The first round is always made."""
    records = {contestant.name: [] for contestant in contestants}
    for number in range(count):
        if number and budget.is_spent():
            break
        for contestant in in_turn(contestants, number):
            records[contestant.name].append(measure(contestant))
    return records


def median(records, key):
    values = [record[key] for record in records if record.get(key) is not None]
    return statistics.median(values) if values else None


def least(records, key):
    values = [record[key] for record in records if record.get(key) is not None]
    return min(values) if values else None


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)
