# What the adapters in Python share: the driver's setup, and the loop around a provider. A job is a
# line of JSON on standard input, its result a line on standard output.
import json
import os
import sys
import time

with open("setup.json") as setup_file:
    setup = json.load(setup_file)
STATUS = "urn:oasis:names:tc:SAML:2.0:status:"


def date(seconds):
    """The date so many seconds from now: whole seconds, and Z."""
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(time.time() + seconds))


def at(thing, path):
    """What is held at an attribute's path, or null when nothing was read there."""
    for name in path.split("."):
        thing = getattr(thing, name, None)
    return thing


def serve(handlers):
    """Each handler returns what it read, the response and, if it differs from the job, what it told."""
    results = os.fdopen(os.dup(1), "w")
    os.dup2(2, 1)  # what a toolkit prints is no result
    for line in sys.stdin:
        job = json.loads(line)
        try:
            result = dict(zip(("read", "response", "told"), handlers[job["kind"]](job)))
        except Exception as error:
            result = {"refused": f"{type(error).__name__}: {error}".split("\n")[0]}
        print(json.dumps(result), file=results, flush=True)
