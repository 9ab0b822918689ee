// The providers from npm, installed beside the folder this runs in. A job is a line of JSON on
// standard input, its result a line on standard output.
const fs = require("fs");
const readline = require("readline");
const install = require("module").createRequire(process.cwd() + "/");

const setup = JSON.parse(fs.readFileSync("setup.json"));
const key = fs.readFileSync("key.pem", "utf8");
const cert = fs.readFileSync("cert.pem", "utf8");
const STATUS = "urn:oasis:names:tc:SAML:2.0:status:";
const CLASS = "urn:oasis:names:tc:SAML:2.0:ac:classes:PasswordProtectedTransport";
const POST = "urn:oasis:names:tc:SAML:2.0:bindings:HTTP-POST";
const SHA256 = "http://www.w3.org/2001/04/xmldsig-more#rsa-sha256";

// Whole seconds, and Z.
const date = seconds => new Date(Date.now() + 1000 * seconds).toISOString().replace(/\.\d+/, "");
const value = job => new URL(job.message).searchParams.get("SAMLRequest");

// samlp: a middleware. It gives its responses dates with fractions and no end of the session, and
// has settings for neither: its unsigned text is changed, then signed as it would sign it.
function samlp() {
  const samlp = install("samlp");
  const { SignedXml } = install("xml-crypto");
  const base = {
    issuer: setup.idp, key, cert, destination: setup.acs, recipient: setup.acs,
    signatureAlgorithm: "rsa-sha256", digestAlgorithm: "sha256", getPostURL: (...rest) => rest.pop()(null, setup.acs),
  };

  function sign(xml, element) {
    const signer = new SignedXml({ privateKey: key, signatureAlgorithm: SHA256, canonicalizationAlgorithm: "http://www.w3.org/2001/10/xml-exc-c14n#" });
    const path = `//*[local-name(.)='${element}']`;
    signer.addReference({
      xpath: path, digestAlgorithm: "http://www.w3.org/2001/04/xmlenc#sha256",
      transforms: ["http://www.w3.org/2000/09/xmldsig#enveloped-signature", "http://www.w3.org/2001/10/xml-exc-c14n#"],
    });
    signer.computeSignature(xml, { location: { reference: `${path}/*[local-name(.)='Issuer']`, action: "after" } });
    return signer.getSignedXml();
  }

  // The text that a middleware sends: the value of a form's field.
  const sent = (middleware, request) => new Promise((resolve, reject) =>
    middleware(request, { set() {}, send: text => resolve(/name="SAMLResponse"\s+value="([^"]*)"/.exec(text)[1]) }, reject));

  return {
    async authn(job) {
      const request = { method: "GET", query: { SAMLRequest: value(job) } };
      const read = await new Promise((resolve, reject) =>
        samlp.parseRequest(request, {}, (error, data) => error ? reject(error) : resolve(data)));
      const response = { ...base, inResponseTo: read.id, audience: read.issuer, signAssertion: false };
      const readBack = { id: read.id, issuer: read.issuer, acs: read.assertionConsumerServiceURL, force: read.forceAuthn === "true" };
      if (job.outcome !== "Success") {
        return [readBack, await sent(samlp.sendError({ ...response, signResponse: true, error: { code: STATUS + job.outcome } }), request)];
      }
      let text = await new Promise((resolve, reject) => samlp.getSamlResponse({
        ...response, sessionIndex: "_samlp", nameIdentifierFormat: setup.name_format, authnContextClassRef: CLASS,
        profileMapper: () => ({ getClaims: () => job.attributes, getNameIdentifier: () => ({ nameIdentifier: job.user }) }),
      }, {}, (error, xml) => error ? reject(error) : resolve(xml)));
      text = text.replace(/(T\d\d:\d\d:\d\d)\.\d+Z/g, "$1Z")
        .replace("<saml:AuthnStatement", `$& SessionNotOnOrAfter="${date(3600)}"`);
      for (const element of ["Assertion", "Response"]) if (job.signed.includes(element)) text = sign(text, element);
      return [readBack, Buffer.from(text).toString("base64")];
    },
    async logout(job) {
      const participants = new (install("samlp/lib/sessionParticipants"))([
        { serviceProviderId: setup.issuer, serviceProviderLogoutURL: setup.acs, nameId: setup.user, sessionIndex: "_samlp", binding: POST }]);
      const read = {};
      const find = participants.get;
      participants.get = (issuer, session, subject, done) =>
        find.call(participants, issuer, session, subject, done, Object.assign(read, { issuer, session, subject }));
      const store = { // what is known while the logout goes on
        save: (_, state, done) => { read.id = (store.kept = state).parsedRequest.id; done(null, "kept"); },
        load: (_, id, options, done) => done(null, store.kept),
      };
      const request = { method: "GET", query: { SAMLRequest: value(job) }, body: {} };
      return [read, await sent(samlp.logout({ ...base, destination: null, store, sessionParticipants: participants }), request)];
    },
  };
}

// samlify: its templates say what is sent, and its application says the dates.
function samlify() {
  const samlify = install("samlify");
  samlify.setSchemaValidator({ validate: async () => "left to the other readers" });
  const post = [{ Binding: POST, Location: setup.acs }];
  const attribute = (name, i) => ({ name, valueTag: "value" + i, nameFormat: "urn:oasis:names:tc:SAML:2.0:attrname-format:basic", valueXsiType: "xs:string" });
  const template = samlify.SamlLib.defaultLoginResponseTemplate.context.replace("{AuthnStatement}",
    `<saml:AuthnStatement AuthnInstant="{IssueInstant}" SessionIndex="_samlify" SessionNotOnOrAfter="{End}"><saml:AuthnContext>` +
    `<saml:AuthnContextClassRef>${CLASS}</saml:AuthnContextClassRef></saml:AuthnContext></saml:AuthnStatement>`);
  const idp = samlify.IdentityProvider({
    entityID: setup.idp, privateKey: key, signingCert: cert, isAssertionEncrypted: false, nameIDFormat: [setup.name_format],
    singleSignOnService: post, singleLogoutService: post, requestSignatureAlgorithm: SHA256,
    loginResponseTemplate: { context: template, attributes: Object.keys(setup.attributes).map(attribute) },
  });
  const sp = signed => samlify.ServiceProvider({
    entityID: setup.issuer, assertionConsumerService: post, singleLogoutService: post, wantLogoutResponseSigned: true,
    wantAssertionsSigned: signed.includes("Assertion"), wantMessageSigned: signed.includes("Response"),
  });
  const body = job => ({ body: { SAMLRequest: job.message } });

  return {
    async authn(job) {
      const { extract } = await idp.parseLoginRequest(sp([]), "post", body(job));
      const attributes = Object.fromEntries(Object.entries(job.attributes).map(([name, values]) => [name, values[0]]));
      const replace = context => ({
        id: "", context: samlify.SamlLib.replaceTagsByValue(context, {
          ID: "_" + crypto.randomUUID(), AssertionID: "_" + crypto.randomUUID(), Destination: setup.acs, Audience: extract.issuer,
          SubjectRecipient: setup.acs, Issuer: setup.idp, IssueInstant: date(0), StatusCode: STATUS + "Success",
          ConditionsNotBefore: date(0), ConditionsNotOnOrAfter: date(600), SubjectConfirmationDataNotOnOrAfter: date(600),
          NameIDFormat: setup.name_format, NameID: job.user, InResponseTo: extract.request.id, End: date(3600),
          ...Object.fromEntries(Object.entries(attributes).map(([, text], i) => ["attrValue" + i, text])),
        }),
      });
      const response = await idp.createLoginResponse(sp(job.signed), { extract }, "post", {}, replace);
      return [{ id: extract.request.id, issuer: extract.issuer, acs: extract.request.assertionConsumerServiceUrl, policy: extract.nameIDPolicy?.format },
        response.context, { attributes: Object.fromEntries(Object.entries(attributes).map(([name, text]) => [name, [text]])) }];
    },
    async logout(job) {
      const { extract } = await idp.parseLogoutRequest(sp([]), "post", body(job));
      return [{ id: extract.request.id, issuer: extract.issuer, subject: extract.nameID, session: [extract.sessionIndex] },
        idp.createLogoutResponse(sp([]), { extract }, "post").context];
    },
  };
}

// node-saml is a service provider; it takes a logout request from the other side.
function nodeSaml() {
  const { SAML } = install("@node-saml/node-saml");
  const saml = new SAML({
    issuer: setup.idp, callbackUrl: setup.acs, logoutUrl: setup.acs, entryPoint: setup.acs, privateKey: key, idpCert: cert, signatureAlgorithm: "sha256",
  });
  return {
    async logout(job) {
      const query = new URL(job.message).search.slice(1);
      const { profile } = await saml.validateRedirectAsync({ SAMLRequest: value(job) }, query);
      const url = await saml.getLogoutResponseUrlAsync(profile, "", {}, true);
      return [{ id: profile.ID, issuer: profile.issuer, subject: profile.nameID, session: [profile.sessionIndex] }, url, { signed: [] }];
    },
  };
}

const handlers = { samlp, samlify, "node-saml": nodeSaml }[process.argv[2]]();
const write = result => process.stdout.write(JSON.stringify(result) + "\n");
console.log = console.warn = console.error;
readline.createInterface({ input: process.stdin }).on("line", async line => {
  const job = JSON.parse(line);
  try {
    const [read, response, told] = await handlers[job.kind](job);
    write({ read, response, told });
  } catch (error) {
    write({ refused: String(error?.stack && process.env.TRACE ? error.stack : error).split("\n")[0] });
  }
});
