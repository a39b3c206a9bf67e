// Watches an installation in the simulator's console and plays an operator who switches a fault on and off: console.js URL
// (with NODE_PATH). Prints how far it is; tests/e2e/ConsoleTest.cpp runs the agent meanwhile.
const assert = require('node:assert');
const { chromium } = require('playwright-core');

async function installation(page) {
  const way = stage => page.locator(`tr[data-title="T-alpha"][data-stage="${stage}"]`);
  await way('downloading').waitFor();
  await page.locator('tr[data-download="alpha.cab"] progress').waitFor();
  await way('installed').waitFor();
  assert.equal(await way('installed').locator('[aria-current=step]').textContent(), 'installed');
  assert.equal(await page.locator('#devices').textContent(), '1');
}

// While a poll waits for its reply there is no second one, whatever the operator does.
async function pauseWithinAPoll(page, asked) {
  const meanwhile = await new Promise(done => page.route('**/console/state?*', async route => {
    const before = asked.length;
    for (const key of ['p', 'p']) await page.keyboard.press(key);
    await page.evaluate(() => fetch('/'));
    done(asked.slice(before));
    await route.continue();
  }, { times: 1 }));
  assert.deepEqual(meanwhile, [page.url()]);
}

// With the keyboard alone.
async function fault(page) {
  const toggle = page.locator('button[data-fault="entitlement 503"]');
  await toggle.focus();
  await page.keyboard.press('Space');
  await page.locator('button[data-fault="entitlement 503"][aria-pressed=true]').waitFor();
  console.log('entitlement fails');
  await page.locator('tr[data-exchange="entitlement 503"]').first().waitFor();
  await page.keyboard.press('Space');
  await page.locator('button[data-fault="entitlement 503"][aria-pressed=false]').waitFor();
  // The newest stands first.
  await page.locator('tr[data-exchange="entitlement 200"] ~ tr[data-exchange="entitlement 503"]').first().waitFor();
}

async function main(url) {
  const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });
  const page = await browser.newPage({ ignoreHTTPSErrors: true, colorScheme: 'dark' });
  const complaints = [], asked = [];
  page.on('console', message => complaints.push(message.text()));
  page.on('pageerror', error => complaints.push(String(error)));
  page.on('request', request => asked.push(request.url()));
  await page.goto(url);
  await page.getByText('live', { exact: true }).waitFor();
  console.log('open');
  await installation(page);
  await pauseWithinAPoll(page, asked);
  console.log('installed');
  await fault(page);
  const dark = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  await page.emulateMedia({ colorScheme: 'light' });
  assert.notEqual(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), dark);
  for (const button of await page.locator('#log button').all()) await button.click();
  const shown = await page.content();
  assert.doesNotMatch(shown, /session-of-the-lab|eyJ|signature=[^"&\s]/);
  assert.match(shown, /"downloadUrl"/);
  assert.deepEqual([complaints, [...new Set(asked.map(address => new URL(address).origin))]], [[], [url]]);
  // What comes into the page from elsewhere does not run.
  await page.evaluate(() => document.body.append(Object.assign(document.createElement('script'), { text: 'strange = 1' })));
  assert.equal(await page.evaluate(() => typeof strange), 'undefined');
  assert.match(complaints.join(), /Content Security Policy/);
  console.log('entitlement is back');
  await browser.close();
}

main(process.argv[2]).catch(error => {
  console.log(String(error.stack).replace(/\n/g, ' | '));
  process.exit(1);
});
