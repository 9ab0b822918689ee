# SimpleSAMLphp as an identity provider and an attribute authority, under PHP's own server.
import html
import os
import re
import socket
import subprocess
import time
import urllib.error
import urllib.request
from http.cookiejar import CookieJar

from provider import serve, setup

with socket.socket() as free:
    free.bind(("127.0.0.1", 0))
    PORT = free.getsockname()[1]
URL = f"http://127.0.0.1:{PORT}/"
PLACES = {"authn": "saml2/idp/SSOService.php", "logout": "saml2/idp/SingleLogoutService.php"}
# It does not show what it read; a response goes to the issuer's address and names the request.
SHOWN = re.compile(r'name="SAMLResponse" value="([^"]+)"')


def browser():
    return urllib.request.build_opener(urllib.request.HTTPCookieProcessor(CookieJar()))


signed_in = browser()


def send(who, job):
    url = URL + PLACES[job["kind"]] + "?" + job["message"].split("?", 1)[1]
    headers = {"X-Outcome": job["outcome"], "X-Signed": ",".join(job["signed"])}
    try:
        page = who.open(urllib.request.Request(url, headers=headers)).read().decode()
    except urllib.error.HTTPError as error:
        page = error.read().decode()
    response = SHOWN.search(page)
    if not response:
        raise RuntimeError(html.unescape(re.search(r"Caused by: ([^\n<]*)", page)[1]))
    return html.unescape(response[1])


def authn(job):
    global signed_in
    if "NoPassive" == job["outcome"]:
        return {}, send(browser(), {**job, "outcome": "Success"})
    return {}, send(signed_in, job)


def logout(job):
    return {}, send(signed_in, job)


folder = os.getcwd()
server = subprocess.Popen(
    ["php", "-S", f"127.0.0.1:{PORT}", "-t", "/usr/share/simplesamlphp/www"],
    env={**os.environ, "SIMPLESAMLPHP_CONFIG_DIR": os.path.join(os.path.dirname(__file__), "simplesamlphp"),
         "INTEROP_FOLDER": folder, "INTEROP_URL": URL})
try:
    for _ in range(100):
        with socket.socket() as attempt:
            if attempt.connect_ex(("127.0.0.1", PORT)) == 0:
                break
        time.sleep(0.05)
    serve({"authn": authn, "logout": logout})
finally:
    server.terminate()
    server.wait()
