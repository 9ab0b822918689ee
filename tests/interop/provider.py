# What the adapters in Python share: the setup that the driver wrote, and the loop around one
# provider. A job is a line of JSON on standard input, its result a line on standard output.
import json
import os
import sys
import time

setup = json.load(open("setup.json"))

STATUS = "urn:oasis:names:tc:SAML:2.0:status:"


def date(seconds):
    """The date so many seconds from now: whole seconds, and Z."""
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(time.time() + seconds))


def at(thing, path):
    """What a provider holds at an attribute's path, or null when it read nothing there."""
    for name in path.split("."):
        thing = getattr(thing, name, None)
    return thing


def serve(handlers):
    """Each handler takes a job, returns what it read, the response, and what differs from the job."""
    results = os.fdopen(os.dup(1), "w")
    os.dup2(2, 1)  # what the toolkit prints is no result
    for line in sys.stdin:
        job = json.loads(line)
        try:
            read, response, *more = handlers[job["kind"]](job)
            result = {"read": read, "response": response, **dict(*more)}
        except Exception as error:
            result = {"refused": f"{type(error).__name__}: {error}".split("\n")[0]}
        print(json.dumps(result), file=results, flush=True)
