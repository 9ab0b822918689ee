// The providers from npm, which are installed around the folder this runs in. A job is a line of JSON
// on standard input, its result a line on standard output.
const crypto = require("crypto");
const fs = require("fs");
const readline = require("readline");
const { promisify } = require("util");
const install = require("module").createRequire(process.cwd() + "/");

const setup = JSON.parse(fs.readFileSync("setup.json"));
const key = fs.readFileSync("key.pem", "utf8");
const cert = fs.readFileSync("cert.pem", "utf8");
const STATUS = "urn:oasis:names:tc:SAML:2.0:status:";
const CLASS = "urn:oasis:names:tc:SAML:2.0:ac:classes:PasswordProtectedTransport";
const POST = "urn:oasis:names:tc:SAML:2.0:bindings:HTTP-POST";
const RSA = "http://www.w3.org/2001/04/xmldsig-more#rsa-sha256";

// Whole seconds, and Z.
const date = seconds => new Date(Date.now() + 1000 * seconds).toISOString().replace(/\.\d+/, "");
const value = job => new URL(job.message).searchParams.get("SAMLRequest");
const mapped = (object, change) => Object.fromEntries(Object.entries(object).map(change));

// A middleware. It writes dates with fractions and no end of the session, and has settings for
// neither: its unsigned text is changed, then signed.
function samlp() {
  const samlp = install("samlp");
  const { SignedXml } = install("xml-crypto");
  const base = {
    issuer: setup.idp, key, cert, recipient: setup.acs, signatureAlgorithm: "rsa-sha256", digestAlgorithm: "sha256",
    getPostURL: (...rest) => rest.pop()(null, setup.acs),
  };
  const parsed = promisify(samlp.parseRequest);
  const made = promisify(samlp.getSamlResponse);
  // The value of the form that a middleware sends.
  const sent = (middleware, request) => new Promise((resolve, reject) => middleware(request, {
    set() {}, send: page => resolve(/name="SAMLResponse"\s+value="([^"]*)"/.exec(page)[1]),
  }, reject));

  function sign(xml, element) {
    const exclusive = "http://www.w3.org/2001/10/xml-exc-c14n#";
    const signer = new SignedXml({ privateKey: key, signatureAlgorithm: RSA, canonicalizationAlgorithm: exclusive });
    const xpath = `//*[local-name(.)='${element}']`;
    signer.addReference({
      xpath, digestAlgorithm: "http://www.w3.org/2001/04/xmlenc#sha256",
      transforms: ["http://www.w3.org/2000/09/xmldsig#enveloped-signature", exclusive],
    });
    signer.computeSignature(xml, { location: { reference: `${xpath}/*[local-name(.)='Issuer']`, action: "after" } });
    return signer.getSignedXml();
  }

  return {
    async authn(job) {
      const request = { method: "GET", query: { SAMLRequest: value(job) } };
      const { id, issuer, assertionConsumerServiceURL: acs, forceAuthn } = await parsed(request, {});
      const read = { id, issuer, acs, force: forceAuthn === "true" };
      const options = { ...base, destination: acs, inResponseTo: id, audience: issuer, signAssertion: false };
      if (job.outcome !== "Success") {
        return [read, await sent(samlp.sendError({ ...options, signResponse: true, error: { code: STATUS + job.outcome } }), request)];
      }
      const text = (await made({
        ...options, sessionIndex: "_samlp", nameIdentifierFormat: setup.name_format, authnContextClassRef: CLASS,
        profileMapper: () => ({ getClaims: () => job.attributes, getNameIdentifier: () => ({ nameIdentifier: job.user }) }),
      }, {})).replace(/(T[\d:]{8})\.\d+Z/g, "$1Z").replace("<saml:AuthnStatement", `$& SessionNotOnOrAfter="${date(3600)}"`);
      const signed = ["Assertion", "Response"].filter(each => job.signed.includes(each)).reduce(sign, text);
      return [read, Buffer.from(signed).toString("base64")];
    },
    async logout(job) {
      const participants = new (install("samlp/lib/sessionParticipants"))([
        { serviceProviderId: setup.issuer, serviceProviderLogoutURL: setup.acs, nameId: setup.user, sessionIndex: "_samlp", binding: POST }]);
      const read = {};
      const find = participants.get.bind(participants);
      participants.get = (issuer, session, subject, done) => {
        Object.assign(read, { issuer, session, subject });
        find(issuer, session, subject, done);
      };
      const store = { // what is known while the logout goes on
        save(_, state, done) { read.id = (this.kept = state).parsedRequest.id; done(null, "kept"); },
        load(_, id, options, done) { done(null, this.kept); },
      };
      const request = { method: "GET", query: { SAMLRequest: value(job) }, body: {} };
      return [read, await sent(samlp.logout({ ...base, store, sessionParticipants: participants }), request)];
    },
  };
}

// Templates say what it sends, and the application fills in the dates. One value for each attribute.
function samlify() {
  const samlify = install("samlify");
  samlify.setSchemaValidator({ validate: async () => "left to the other readers" });
  const post = [{ Binding: POST, Location: setup.acs }];
  const idp = samlify.IdentityProvider({
    entityID: setup.idp, privateKey: key, signingCert: cert, isAssertionEncrypted: false, nameIDFormat: [setup.name_format],
    singleSignOnService: post, singleLogoutService: post, requestSignatureAlgorithm: RSA,
    loginResponseTemplate: {
      context: samlify.SamlLib.defaultLoginResponseTemplate.context.replace("{AuthnStatement}",
        '<saml:AuthnStatement AuthnInstant="{IssueInstant}" SessionIndex="_samlify" SessionNotOnOrAfter="{End}"><saml:AuthnContext>' +
        `<saml:AuthnContextClassRef>${CLASS}</saml:AuthnContextClassRef></saml:AuthnContext></saml:AuthnStatement>`),
      attributes: Object.keys(setup.attributes).map((name, i) => (
        { name, valueTag: "value" + i, nameFormat: "urn:oasis:names:tc:SAML:2.0:attrname-format:basic", valueXsiType: "xs:string" })),
    },
  });
  const sp = signed => samlify.ServiceProvider({
    entityID: setup.issuer, assertionConsumerService: post, singleLogoutService: post, wantLogoutResponseSigned: true,
    wantAssertionsSigned: signed.includes("Assertion"), wantMessageSigned: signed.includes("Response"),
  });
  const form = job => ({ body: { SAMLRequest: job.message } });

  return {
    async authn(job) {
      const { extract } = await idp.parseLoginRequest(sp([]), "post", form(job));
      const attributes = mapped(job.attributes, ([name, values]) => [name, values.slice(0, 1)]);
      const { context } = await idp.createLoginResponse(sp(job.signed), { extract }, "post", {}, template => ({
        context: samlify.SamlLib.replaceTagsByValue(template, {
          ID: "_" + crypto.randomUUID(), AssertionID: "_" + crypto.randomUUID(), Destination: setup.acs, Audience: extract.issuer,
          SubjectRecipient: setup.acs, Issuer: setup.idp, IssueInstant: date(0), StatusCode: STATUS + "Success",
          ConditionsNotBefore: date(0), ConditionsNotOnOrAfter: date(600), SubjectConfirmationDataNotOnOrAfter: date(600),
          NameIDFormat: setup.name_format, NameID: job.user, InResponseTo: extract.request.id, End: date(3600),
          ...mapped(attributes, ([, [text]], i) => ["attrValue" + i, text]),
        }),
      }));
      const { id, assertionConsumerServiceUrl: acs } = extract.request;
      return [{ id, acs, issuer: extract.issuer, policy: extract.nameIDPolicy?.format }, context, { attributes }];
    },
    async logout(job) {
      const { extract } = await idp.parseLogoutRequest(sp([]), "post", form(job));
      return [{ id: extract.request.id, issuer: extract.issuer, subject: extract.nameID, session: [extract.sessionIndex] },
        idp.createLogoutResponse(sp([]), { extract }, "post").context];
    },
  };
}

// A service provider, which takes a logout request from the other side.
function nodeSaml() {
  const { SAML } = install("@node-saml/node-saml");
  const saml = new SAML({
    issuer: setup.idp, callbackUrl: setup.acs, entryPoint: setup.acs, logoutUrl: setup.acs, privateKey: key, idpCert: cert,
    signatureAlgorithm: "sha256",
  });
  return {
    async logout(job) {
      const { profile } = await saml.validateRedirectAsync({ SAMLRequest: value(job) }, new URL(job.message).search.slice(1));
      return [{ id: profile.ID, issuer: profile.issuer, subject: profile.nameID, session: [profile.sessionIndex] },
        await saml.getLogoutResponseUrlAsync(profile, "", {}, true), { signed: [] }]; // what is signed is the URL
    },
  };
}

const handlers = { samlp, samlify, "node-saml": nodeSaml }[process.argv[2]]();
const write = result => process.stdout.write(JSON.stringify(result) + "\n");
console.log = console.warn = console.error;
readline.createInterface({ input: process.stdin }).on("line", line => {
  const job = JSON.parse(line);
  handlers[job.kind](job).then(([read, response, told]) => write({ read, response, told }), error => write({ refused: String(error) }));
});
