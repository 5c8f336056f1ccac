#!/usr/bin/env python3
"""Uses the page of scripts/gallery in a headless Chromium, by the W3C WebDriver protocol.

gallery-page.py <chromedriver> <page>
"""

import json
import pathlib
import re
import subprocess
import sys
import urllib.request

ELEMENT = 'element-6066-11e4-a52e-4f735466cecf'
RIGHT = '\ue014'
SPACE = ' '


def check(holds, message):
    if not holds:
        sys.exit(f'FAILED: {message}')


class Browser:
    def __init__(self, port):
        self.session = f'http://127.0.0.1:{port}/session'
        # Chromium's own sandbox refuses to run as root.
        arguments = ['--headless=new', '--no-sandbox', '--disable-gpu', '--window-size=1280,1000']
        self.session += '/' + self.post('', {'capabilities': {'alwaysMatch': {
            'goog:chromeOptions': {'args': arguments},
            'goog:loggingPrefs': {'browser': 'ALL', 'performance': 'ALL'}}}})['sessionId']

    def post(self, path, body, method='POST'):
        request = urllib.request.Request(self.session + path, json.dumps(body).encode(),
                                         {'Content-Type': 'application/json'}, method=method)
        # No proxy of the environment stands between this and the driver.
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        with opener.open(request, timeout=120) as answer:
            return json.load(answer)['value']

    def run(self, script, *arguments):
        return self.post('/execute/sync', {'script': 'return ' + script, 'args': arguments})

    def find(self, selector):
        found = self.post('/elements', {'using': 'css selector', 'value': selector})
        check(found, f'the page has no {selector}')
        return [element[ELEMENT] for element in found]

    def click(self, element):
        self.post(f'/element/{element}/click', {})

    def press(self, element, keys):
        self.post(f'/element/{element}/value', {'text': keys})

    def drag(self, element, x):
        """Presses the mouse in the middle of the element and releases it x pixels to the right."""
        origin = {ELEMENT: element}
        self.post('/actions', {'actions': [{'type': 'pointer', 'id': 'mouse', 'actions': [
            {'type': 'pointerMove', 'origin': origin, 'x': 0, 'y': 0}, {'type': 'pointerDown', 'button': 0},
            {'type': 'pointerMove', 'origin': origin, 'x': x, 'y': 0}, {'type': 'pointerUp', 'button': 0}]}]})

    def log(self, kind):
        return self.post('/se/log', {'type': kind})


def try_section(browser, preset, section):
    def part(selector):
        return browser.find(f'#{preset} {selector}')[0]

    def cut():
        """The share of the result that is cut off at the left, in hundredths."""
        clip = browser.run("getComputedStyle(document.querySelector(arguments[0])).clipPath", f'#{preset} .result')
        left = re.fullmatch(r'inset\(0px 0px 0px ([\d.]+)%\)', clip)
        check(left, f'{preset}: the result is clipped by {clip}')
        return float(left[1])

    def width():
        """The width of the result on the screen in its own pixels."""
        return browser.run('(image => image.getBoundingClientRect().width * devicePixelRatio / image.naturalWidth)'
                           '(document.querySelector(arguments[0]))', f'#{preset} .result')

    check(browser.run('[...arguments[0].querySelectorAll("img")].every(i => i.complete && i.naturalWidth > 0)',
                      {ELEMENT: section}), f'{preset}: a picture is missing')
    slider, button = part('input'), part('button')
    check(cut() == 50, f'{preset}: the line starts at {cut()}')
    browser.press(slider, RIGHT * 3)
    check(cut() == 53, f'{preset}: the line is at {cut()} after three steps')
    browser.drag(part('.stage'), 100)
    check(cut() > 55, f'{preset}: the line is at {cut()} after dragging it')

    fitting = width()
    browser.click(button)
    check(width() == 1, f'{preset}: a pixel is {width()} wide at 1:1')
    check(browser.run('arguments[0].getAttribute("aria-pressed")', {ELEMENT: button}) == 'true',
          f'{preset}: the button does not say that it is pressed')
    browser.press(button, SPACE)
    check(width() == fitting != 1, f'{preset}: a pixel is {width()} wide afterwards, and was {fitting}')
    for closed in browser.find(f'#{preset} summary'):
        browser.click(closed)
    check(browser.run('arguments[0].querySelector("svg")?.getBoundingClientRect().width > 50', {ELEMENT: section}),
          f'{preset}: there is no graph')


def main():
    page = pathlib.Path(sys.argv[2]).resolve().as_uri()
    driver = subprocess.Popen([sys.argv[1], '--port=0'], stdout=subprocess.PIPE, text=True)
    browser = None
    try:
        port = next(found[1] for line in driver.stdout if (found := re.search(r'started successfully on port (\d+)', line)))
        browser = Browser(port)
        browser.post('/url', {'url': page})
        sections = browser.find('section')
        for section in sections:
            try_section(browser, browser.run('arguments[0].id', {ELEMENT: section}), section)
        errors = [entry['message'] for entry in browser.log('browser')]
        check(not errors, 'the console says:\n' + '\n'.join(errors))
        events = [json.loads(entry['message'])['message'] for entry in browser.log('performance')]
        requests = {event['params']['request']['url'] for event in events
                    if event['method'] == 'Network.requestWillBeSent'}
        check(page in requests, 'the requests are not reported')
        others = {url for url in requests if url != page and not url.startswith('data:')}
        check(not others, 'the page requests:\n' + '\n'.join(sorted(others)))
    finally:
        if browser:
            browser.post('', {}, 'DELETE')
        driver.terminate()
    print(f'{len(sections)} presets')


main()
