"""In which order the samples of one metric may come to a host that was there all the time.

    births    live                       as history
    a         b  c  d  (cut)             -
    d         e  f  g  h                 b  c  d      while e to h come

What was sent live behind the last mark comes again as history; what was never sent comes as history
alone. So live samples go ahead of older historical ones, and a session's history may begin anew where
the one before had come further. These orders hold:
- A live value, in a birth or not, is never older than any value that came before it.
- Within a session the historical values come in the order of their times.
- A sample comes live once at most, and not at all when it came as history.
- Within a session no sample comes twice as data. A birth is no data: it shows the last value.
"""


def disorder(name, came):
    """What is wrong with the samples of a metric, in order of coming; sentences."""
    return [*_stale_values(name, came), *_history_backwards(name, came), *_repeats(name, came)]


def _stale_values(name, came):
    newest = 0
    for sample in came:
        if not sample.is_historical and sample.time < newest:
            yield f"{name}: {sample.time} came live behind {newest}"
        newest = max(newest, sample.time)


def _history_backwards(name, came):
    historical = [sample for sample in came if sample.is_historical]
    for before, after in zip(historical, historical[1:]):
        if after.births == before.births and after.time < before.time:
            yield f"{name}: {after.time} came as history behind {before.time} of its session"


def _repeats(name, came):
    last = {}  # the births before each sample came as data, the last time
    for sample in came:
        if sample.is_birth:
            continue
        before = last.get(sample.key())
        if before is not None and not sample.is_historical:
            yield f"{name}: {sample.time} came live though it had come before"
        elif before == sample.births:
            yield f"{name}: {sample.time} came twice in one session"
        last[sample.key()] = sample.births
