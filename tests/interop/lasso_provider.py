# Lasso as an identity provider, an attribute authority and a decision point.
import lasso

from provider import STATUS, at, date, serve, setup

idp = lasso.Server("idp.xml", "key.pem", None, "cert.pem")
idp.signatureMethod = lasso.SIGNATURE_METHOD_RSA_SHA256
for requester in ("issuer.xml", "channel.xml"):
    idp.addProvider(lasso.PROVIDER_ROLE_SP, requester)
sessions = {}  # of each user who was signed in


def query(job):
    return job["message"].split("?", 1)[1]


def attribute_statement(job):
    statement = lasso.Saml2AttributeStatement()
    attributes = []
    for name, values in job["attributes"].items():
        attribute = lasso.Saml2Attribute()
        attribute.name = name
        texts = []
        for value in values:
            text = lasso.Saml2AttributeValue()
            text.any = [lasso.MiscTextNode.newWithString(value)]
            text.any[0].textChild = True
            texts.append(text)
        attribute.attributeValue = texts
        attributes.append(attribute)
    statement.attribute = attributes
    return statement


def authn(job):
    login = lasso.Login(idp)
    login.processAuthnRequestMsg(query(job))
    request = login.request
    read = {"id": request.iD, "issuer": request.issuer.content, "passive": request.isPassive,
            "force": request.forceAuthn, "acs": request.assertionConsumerServiceURL,
            "policy": at(request, "nameIDPolicy.format")}
    success = job["outcome"] == "Success"
    try:
        login.validateRequestMsg(success, True)
    except lasso.Error:
        if success:
            raise
    if "Response" not in job["signed"]:  # it always signs the assertion
        login.setSignatureHint(lasso.PROFILE_SIGNATURE_HINT_FORBID)
    if success:
        login.buildAssertion(lasso.SAML2_AUTHN_CONTEXT_PASSWORD_PROTECTED_TRANSPORT, date(0), None,
                             date(-60), date(600))
        assertion = login.response.assertion[0]
        assertion.subject.nameID.content = job["user"]
        assertion.authnStatement[0].sessionNotOnOrAfter = date(3600)
        assertion.attributeStatement = [attribute_statement(job)]
    else:
        login.response.status.statusCode.statusCode.value = STATUS + job["outcome"]
    login.buildAuthnResponseMsg()
    if success:
        sessions[job["user"]] = login.session.dump()
    if success and "Response" in job["signed"]:
        return read, login.msgBody, {"signed": ["Response", "Assertion"]}
    return read, login.msgBody


def assertion_query(job):
    query = lasso.AssertionQuery(idp)
    query.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    query.processRequestMsg(job["message"])
    request = query.request
    query.validateRequest()
    assertion = lasso.Saml2Assertion()
    assertion.iD = "_" + request.iD[1:] + "-assertion"
    assertion.version = "2.0"
    assertion.issueInstant = date(0)
    assertion.issuer = lasso.Saml2NameID.newWithString(setup["idp"])
    assertion.subject = request.subject
    conditions = lasso.Saml2Conditions()
    conditions.notBefore, conditions.notOnOrAfter = date(-60), date(600)
    restriction = lasso.Saml2AudienceRestriction()
    restriction.audience = request.issuer.content
    conditions.audienceRestriction = [restriction]
    assertion.conditions = conditions
    query.response.assertion = [assertion]
    return query, request, assertion


def attributes(job):
    query, request, assertion = assertion_query(job)
    assertion.attributeStatement = [attribute_statement(job)]
    query.buildResponseMsg()
    return {"id": request.iD, "issuer": request.issuer.content,
            "subject": at(request, "subject.nameID.content"),
            "attributes": [each.name for each in request.attribute]}, query.msgBody


def authz(job):
    query, request, assertion = assertion_query(job)
    statement = lasso.Saml2AuthzDecisionStatement()
    statement.resource, statement.decision = request.resource, job["outcome"]
    statement.action = request.action
    assertion.authzDecisionStatement = [statement]
    query.buildResponseMsg()
    return {"id": request.iD, "issuer": request.issuer.content,
            "subject": at(request, "subject.nameID.content"), "resource": request.resource,
            "actions": [request.action.content]}, query.msgBody


def logout(job):
    request = lasso.Logout(idp)
    request.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    request.processRequestMsg(query(job))
    read = request.request
    request.setSessionFromDump(sessions[at(read, "nameId.content")])
    request.validateRequest()
    request.buildResponseMsg()
    return {"id": read.iD, "issuer": read.issuer.content, "subject": at(read, "nameId.content"),
            "session": [read.sessionIndex]}, request.msgBody or request.msgUrl


serve({"authn": authn, "attributes": attributes, "authz": authz, "logout": logout})
